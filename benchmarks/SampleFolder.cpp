#include "benchmarks/SampleFolder.h"

#include <QFile>
#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

namespace bench {

SampleFolder::SampleFolder(int projects) : mProjects(projects) {
    // Not in the order of their names, which some volumes would then list them in.
    std::vector<int> order(static_cast<std::size_t>(projects));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    for (const int index : order) Create(NameAt(index), 1 + index * 7919 % 4093);
}

QString SampleFolder::NameAt(int index) {
    return QStringLiteral("Scene %1 Take %2").arg(index / 100 + 1).arg(index % 100 + 1);
}

void SampleFolder::Create(const QString& name, int size) const {
    QFile file(PathOf(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        throw std::runtime_error("could not create " + file.fileName().toStdString());
    }
    file.write(QByteArray(size, 'p'));
}

void SampleFolder::Remove(const QString& name) const {
    QFile::remove(PathOf(name));
}

QString SampleFolder::PathOf(const QString& name) const {
    return mFolder.filePath(name + QStringLiteral(".zuproj"));
}

}  // namespace bench
