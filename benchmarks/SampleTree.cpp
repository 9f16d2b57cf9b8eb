#include "benchmarks/SampleTree.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <stdexcept>

#include "benchmarks/GivenNames.h"

namespace bench {

namespace {

/// Makes many empty files faster than QFile does.
void MakeFile(const QString& path) {
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) throw std::runtime_error("could not create " + path.toStdString());
    ::close(file);
}

}  // namespace

SampleTree::SampleTree(const QList<int>& folders, int projects, SampleNames names)
    : mTopFolders(folders.front()), mProjects(projects) {
    static const char* const kNames[] = {"Reel", "Day", "Setup"};
    QStringList level{mFolder.path()};
    for (int depth = 0; depth < folders.size(); ++depth) {
        QStringList next;
        for (const QString& folder : level)
            for (int i = 1; i <= folders[depth]; ++i)
                next += QStringLiteral("%1/%2 %3").arg(folder, QLatin1String(kNames[depth])).arg(i);
        for (const QString& folder : next)
            if (!QDir().mkdir(folder)) throw std::runtime_error("could not make " + folder.toStdString());
        mFolders += int(next.size());
        level = next;
    }
    const std::vector<QString> given =
        names == SampleNames::AsGiven ? MakeGivenNames(projects) : std::vector<QString>();
    for (int i = 0; i < projects; ++i) {
        const QString name =
            given.empty() ? QStringLiteral("Take %1").arg(i / level.size() + 1) : given[std::size_t(i)];
        MakeFile(QStringLiteral("%1/%2.zuproj").arg(level[i % level.size()], name));
    }
}

}  // namespace bench
