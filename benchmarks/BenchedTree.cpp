#include "benchmarks/BenchedTree.h"

#include <QAbstractItemDelegate>
#include <QScrollBar>

namespace bench {

int CountShownRows(const QTreeView& view) {
    const QScrollBar& bar = *view.verticalScrollBar();
    const int all = bar.maximum() + bar.pageStep();
    if (view.verticalScrollMode() == QAbstractItemView::ScrollPerItem) return all;
    return all / view.itemDelegate()->sizeHint({}, {}).height();
}

}  // namespace bench
