#pragma once

#include <QString>
#include <QTemporaryDir>
#include <string>
#include <vector>

namespace bench {

/// What the projects of a sample are called.
enum class SampleNames {
    /// "Scene 1 Take 1" and so on: short, regular, and as older figures were measured with.
    Regular,
    /// `MakeGivenNames`.
    AsGiven
};

/// A temporary folder of projects, removed at the end.
class SampleFolder {
public:
    explicit SampleFolder(int projects, SampleNames names = SampleNames::Regular);

    std::string Path() const { return mFolder.path().toStdString(); }
    int CountProjects() const { return static_cast<int>(mNames.size()); }
    /// The names without suffix; regular ones in the order in which they are shown when sorted by name.
    const std::vector<QString>& Names() const { return mNames; }
    bool AreNamesRegular() const { return mKind == SampleNames::Regular; }
    /// The size in bytes of the project whose name stands at `index`.
    static int SizeAt(int index) { return 1 + index * 7919 % 4093; }
    /// Makes a project of `size` bytes; removes one.
    void Create(const QString& name, int size) const;
    void Remove(const QString& name) const;

private:
    QString PathOf(const QString& name) const;

    QTemporaryDir mFolder;
    const SampleNames mKind;
    const std::vector<QString> mNames;
};

}  // namespace bench
