#pragma once

#include <QSize>
#include <QString>
#include <QTreeView>
#include <string>

namespace bench {

/// The rows that show in a tree with more of them than fit into view.
int CountShownRows(const QTreeView& view);

/// The size of the window that the panel is shown in.
inline constexpr QSize kWindowSize{1200, 700};

/// A tree on the screen that shows what a folder holds, sorted by name: the panel's, or the one that it is
/// compared with. UI thread.
class BenchedTree {
public:
    virtual ~BenchedTree() = default;

    /// What there is to do before a measurement that does not count in it.
    virtual void Prepare() {}
    /// Begins to show `folder` in place of what was shown. Returns at once.
    virtual void Open(const std::string& folder) = 0;
    virtual void Close() = 0;
    /// What there is to do so that `OpenWithFolders` shows `folder` with all folders in it open, `rows` rows;
    /// does not count in a measurement.
    virtual void PrepareFolders(const std::string& folder, int rows) = 0;
    /// Begins to show `folder` with all folders in it open, in place of what was shown. Returns at once.
    virtual void OpenWithFolders(const std::string& folder) = 0;
    virtual QTreeView& GetView() = 0;
    /// The header's section of the sizes.
    virtual int GetSizeSection() const = 0;
    /// Makes the rows larger (`steps` > 0) or smaller.
    virtual void Zoom(int steps) = 0;
    virtual void SelectAll() = 0;
    /// Shows what matches `text` in place of the tree; an empty text shows the tree again.
    virtual void Search(const QString& text) = 0;
    /// The tree of the search's hits; what is shown while the search's text is not empty.
    virtual QTreeView& GetSearchView() = 0;
};

}  // namespace bench
