#include "benchmarks/TunedFileSystemModel.h"

#include <QApplication>
#include <QHeaderView>
#include <QPixmap>

namespace bench {

namespace {

/// Makes the rows as high as the panel's.
constexpr QSize kIconSize(23, 23);

QIcon MakeIcon(Qt::GlobalColor color) {
    QPixmap picture(64, 64);
    picture.fill(color);
    return QIcon(picture);
}

}  // namespace

ConstantIconProvider::ConstantIconProvider()
    : mFile(MakeIcon(Qt::darkGreen)), mFolder(MakeIcon(Qt::darkYellow)) {}

QString ConstantIconProvider::type(const QFileInfo& info) const {
    return info.isDir() ? QStringLiteral("Folder") : QStringLiteral("Project");
}

TunedFileSystemModel::TunedFileSystemModel(QSize size) : mView(MakeView()), mSearchView(MakeView()) {
    mWindow.resize(size);
    mWindow.show();
}

TunedFileSystemModel::~TunedFileSystemModel() {
    Close();
}

QTreeView* TunedFileSystemModel::MakeView() {
    auto* view = new QTreeView;
    view->setUniformRowHeights(true);
    view->setIconSize(kIconSize);
    view->setSortingEnabled(true);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mWindow.addWidget(view);
    return view;
}

void TunedFileSystemModel::Prepare() {
    Close();
    mModel = std::make_unique<QFileSystemModel>();
    mModel->setIconProvider(&mIcons);
    mModel->setNameFilters({QStringLiteral("*.zuproj")});
    mModel->setNameFilterDisables(false);
    mView->setModel(mModel.get());
    mView->sortByColumn(0, Qt::AscendingOrder);
    mView->setColumnWidth(0, 300);
}

void TunedFileSystemModel::Open(const std::string& folder) {
    mView->setRootIndex(mModel->setRootPath(QString::fromStdString(folder)));
}

/// Each folder is opened when the one that holds it has been listed.
void TunedFileSystemModel::OpenWithFolders(const std::string& folder) {
    QObject::connect(mModel.get(), &QFileSystemModel::directoryLoaded, mModel.get(),
                     [this](const QString& path) {
                         const QModelIndex listed = mModel->index(path);
                         for (int row = 0; row < mModel->rowCount(listed); ++row) {
                             const QModelIndex index = mModel->index(row, 0, listed);
                             if (mModel->isDir(index)) mView->expand(index);
                         }
                     });
    Open(folder);
}

void TunedFileSystemModel::Close() {
    mWindow.setCurrentWidget(mView);
    mView->setModel(nullptr);
    mSearchView->setModel(nullptr);
    mFilter.reset();
    mModel.reset();
}

void TunedFileSystemModel::Zoom(int steps) {
    QFont font = mView->font();
    font.setPixelSize(std::max(8, QFontInfo(font).pixelSize() + 2 * steps));
    mView->setFont(font);
    mView->setIconSize(mView->iconSize() + QSize(11, 11) * steps);
}

void TunedFileSystemModel::Search(const QString& text) {
    if (text.isEmpty()) {
        mWindow.setCurrentWidget(mView);
        return;
    }
    if (!mFilter) {
        mFilter = std::make_unique<QSortFilterProxyModel>();
        mFilter->setSourceModel(mModel.get());
        mFilter->setRecursiveFilteringEnabled(true);
        mFilter->setFilterCaseSensitivity(Qt::CaseInsensitive);
        mSearchView->setModel(mFilter.get());
    }
    mFilter->setFilterFixedString(text);
    mSearchView->setRootIndex(mFilter->mapFromSource(mView->rootIndex()));
    mWindow.setCurrentWidget(mSearchView);
}

}  // namespace bench
