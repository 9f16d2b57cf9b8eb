#pragma once

#include <QFileIconProvider>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QStackedWidget>
#include <memory>

#include "benchmarks/BenchedTree.h"

namespace bench {

/// Gives every file the same icon; the default one reads each file to guess its type.
class ConstantIconProvider : public QAbstractFileIconProvider {
public:
    ConstantIconProvider();
    QIcon icon(IconType type) const override { return type == Folder ? mFolder : mFile; }
    QIcon icon(const QFileInfo& info) const override { return info.isDir() ? mFolder : mFile; }
    QString type(const QFileInfo& info) const override;

private:
    QIcon mFile;
    QIcon mFolder;
};

/// What a user of Qt would pick, set up well: `QFileSystemModel` with constant icons, a name filter, sorted, in
/// a `QTreeView` with uniform row heights. It is the figure that the panel is compared with.
class TunedFileSystemModel : public BenchedTree {
public:
    /// `size`: of the view; as many rows are to show as on the other side.
    explicit TunedFileSystemModel(QSize size);
    ~TunedFileSystemModel() override;

    void Prepare() override;
    void Open(const std::string& folder) override;
    void Close() override;
    void PrepareFolders(const std::string&, int) override {}
    void OpenWithFolders(const std::string& folder) override;
    QTreeView& GetView() override { return *mView; }
    int GetSizeSection() const override { return 1; }
    void Zoom(int steps) override;
    void SelectAll() override { mView->selectAll(); }
    void Search(const QString& text) override;
    QTreeView& GetSearchView() override { return *mSearchView; }

private:
    QTreeView* MakeView();

    QStackedWidget mWindow;
    QTreeView* mView;
    QTreeView* mSearchView;
    ConstantIconProvider mIcons;
    std::unique_ptr<QFileSystemModel> mModel;
    std::unique_ptr<QSortFilterProxyModel> mFilter;
};

}  // namespace bench
