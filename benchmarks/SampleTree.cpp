#include "benchmarks/SampleTree.h"

#include <QDir>
#include <QFile>
#include <stdexcept>

namespace bench {

SampleTree::SampleTree(const QList<int>& folders, int projects) : mProjects(projects) {
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
    for (int i = 0; i < projects; ++i) {
        QFile file(QStringLiteral("%1/Take %2.zuproj").arg(level[i % level.size()]).arg(i / level.size() + 1));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            throw std::runtime_error("could not create " + file.fileName().toStdString());
    }
}

}  // namespace bench
