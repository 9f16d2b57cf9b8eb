#pragma once

#include <QString>
#include <QTemporaryDir>
#include <string>

namespace bench {

/// A temporary folder of projects, "Scene 1 Take 1.zuproj" and so on, removed at the end.
class SampleFolder {
public:
    explicit SampleFolder(int projects);

    std::string Path() const { return mFolder.path().toStdString(); }
    int CountProjects() const { return mProjects; }
    /// The name without suffix of the project that stands at `index` when they are sorted by name.
    static QString NameAt(int index);
    /// Makes a project of `size` bytes; removes one.
    void Create(const QString& name, int size) const;
    void Remove(const QString& name) const;

private:
    QString PathOf(const QString& name) const;

    QTemporaryDir mFolder;
    int mProjects;
};

}  // namespace bench
