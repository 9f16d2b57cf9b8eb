#pragma once

#include <QStringList>
#include <QTemporaryDir>
#include <string>

#include "benchmarks/SampleFolder.h"

namespace bench {

/// A temporary folder of folders in folders ("Reel 1/Day 1/Setup 1" and so on), the last of which hold
/// projects; removed at the end.
class SampleTree {
public:
    /// `folders`: how many each folder of a level holds. `projects` are shared out among the last ones, called
    /// "Take 1" and so on in each, or as people do.
    SampleTree(const QList<int>& folders, int projects, SampleNames names = SampleNames::Regular);

    std::string Path() const { return mFolder.path().toStdString(); }
    /// Below the root, and in it.
    int CountFolders() const { return mFolders; }
    int CountTopFolders() const { return mTopFolders; }
    int CountProjects() const { return mProjects; }
    /// How many of the names that people give contain "kestrel", and "kestrel blue".
    int CountHits() const { return (mProjects + 99) / 100; }
    int CountFewerHits() const { return (mProjects + 199) / 200; }

private:
    QTemporaryDir mFolder;
    int mFolders = 0;
    int mTopFolders;
    int mProjects;
};

}  // namespace bench
