#include "benchmarks/SampleFolder.h"

#include <QFile>
#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>

#include "benchmarks/GivenNames.h"

namespace bench {

namespace {

std::vector<QString> MakeNames(int projects, SampleNames kind) {
    if (kind == SampleNames::AsGiven) return MakeGivenNames(projects);
    std::vector<QString> names;
    for (int index = 0; index < projects; ++index)
        names.push_back(QStringLiteral("Scene %1 Take %2").arg(index / 100 + 1).arg(index % 100 + 1));
    return names;
}

}  // namespace

SampleFolder::SampleFolder(int projects, SampleNames names) : mKind(names), mNames(MakeNames(projects, names)) {
    // Not in the order of their names, which some volumes would then list them in.
    std::vector<int> order(static_cast<std::size_t>(projects));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    for (const int index : order) Create(mNames[static_cast<std::size_t>(index)], SizeAt(index));
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
