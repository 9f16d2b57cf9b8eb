#pragma once

#include <QStringList>
#include <QTemporaryDir>
#include <string>

namespace bench {

/// A temporary folder of folders in folders ("Reel 1/Day 1/Setup 1" and so on), the last of which hold
/// projects; removed at the end.
class SampleTree {
public:
    /// `folders`: how many each folder of a level holds. `projects` are shared out among the last ones.
    SampleTree(const QList<int>& folders, int projects);

    std::string Path() const { return mFolder.path().toStdString(); }
    /// Below the root.
    int CountFolders() const { return mFolders; }
    int CountProjects() const { return mProjects; }

private:
    QTemporaryDir mFolder;
    int mFolders = 0;
    int mProjects;
};

}  // namespace bench
