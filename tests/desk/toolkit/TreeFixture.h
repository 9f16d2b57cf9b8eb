#pragma once

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QTest>
#include <QtWidgets>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "desk/core/log/UserNotice.h"
#include "desk/toolkit/TreeAccess.h"
#include "desk/toolkit/WidgetContainer.h"
#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"
#include "host/toolkit/UI_StaticText.h"
#include "tests/support/ManualMainThread.h"

using Rows = std::vector<std::string>;

inline constexpr host::ColumnID kNameColumn = 0x4E616D65, kSizeColumn = 0x53697A65;
inline constexpr host::ColumnID kDateColumn = 0x44617465;

/// A callback as the tree takes it.
template <class Callback>
auto Shared(Callback callback) {
    return std::make_shared<decltype(std::function(callback))>(std::move(callback));
}

/// The name, and what else a test keeps with a row. Names that end in "/" are folders.
struct NamedRow : host::UI_MultiColumnTreeRow::Data {
    std::string mName, mSize;
};

inline NamedRow& DataOf(const host::UI_MultiColumnTreeRow& row) {
    return static_cast<NamedRow&>(*desk::GetRowData(const_cast<host::UI_MultiColumnTreeRow&>(row)));
}

/// A tree of named rows in a window, with Qt's model tester on it.
class TreeFixture : public testing::Test, public host::Listener {
protected:
    TreeFixture() {
        mWindow.resize(600, 20 * 25 + 28);
        mContainer = desk::CreateWidgetContainer(mWindow);
        mTree = new host::MediaBrowserMultiColumnTree(0, 0.62f);
        mTree->SetSupportMultipleSelections(true);
        mTree->SetCanRowHaveChildrenFunction(
            Shared([](const host::RowRef& row) { return DataOf(*row).mName.ends_with('/'); }));
        mHeader = new host::UI_MultiColumnTreeHeaderRow(*mTree);
        mTree->SetHeaderRow(mHeader);
        mHeader->AppendColumn(u"Name", kNameColumn);
        mHeader->AppendColumn(u"Size", kSizeColumn);
        mHeader->AppendColumn(u"Date", kDateColumn);
        mTree->SetCellSortDataFunction(Shared([this](const host::RowRef& row, unsigned column) {
            const NamedRow& data = DataOf(*row);
            return host::AsciiToUTF16(mHeader->GetColumnAt(column) == kSizeColumn ? data.mSize : data.mName);
        }));
        mHeader->SetStringSortingCallback(Shared([](const host::UTF16String& a, const host::UTF16String& b) {
            return a == u"Trash/" || b == u"Trash/" ? a != u"Trash/" : a < b;
        }));
        mContainer->AddChild(mTree);
        mTree->UI_SetBounds({0, 0, 600, 20 * 25 + 28});
        mTester = std::make_unique<QAbstractItemModelTester>(
            View().model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        mWindow.show();
        Settle();
        host::AddListener(desk::kStation_UserNotices, this);
    }
    ~TreeFixture() override { host::RemoveListener(desk::kStation_UserNotices, this); }
    void ListenToMessage(const host::Message& message) override {
        if (host::MessageCast<desk::UserNoticeMessage>(message)) mHeard.push_back("notice");
    }

    QTreeView& View() { return *desk::GetTreeWidget(*mTree); }
    QScrollBar& ScrollBar() { return *View().verticalScrollBar(); }
    /// Also what is brought up to date once a frame.
    void Settle() {
        mMainThread.RunUntilIdle();
        mMainThread.Advance(std::chrono::milliseconds(20));
    }

    host::RowRef Append(host::UI_MultiColumnTreeRow* parent, const std::string& name) {
        host::RowRef row = mTree->CreateAndAppendRow(parent);
        auto data = std::make_unique<NamedRow>();
        data->mName = name;
        desk::GetRowData(*row) = std::move(data);
        return row;
    }

    host::RowVec Add(host::UI_MultiColumnTreeRow* parent, const Rows& names) {
        host::RowVec rows;
        for (const std::string& name : names) rows.push_back(Append(parent, name));
        mTree->LayoutAfterAppendRow(parent);
        return rows;
    }

    /// `count` names that end in five digits each.
    static Rows Names(const std::string& name, int first, int count, int step = 1) {
        Rows names;
        for (int i = 0; i < count; ++i)
            names.push_back(name + std::to_string(100'000 + first + i * step).substr(1));
        return names;
    }

    host::RowRef Find(const std::string& name) { return FindBelow(mTree->GetTopLevelRows(), name); }

    static host::RowRef FindBelow(const std::vector<host::RowRef>& rows, const std::string& name) {
        for (const host::RowRef& row : rows) {
            if (DataOf(*row).mName == name) return row;
            if (host::RowRef found = FindBelow(row->GetChildRows(), name)) return found;
        }
        return {};
    }

    static Rows NamesOf(const host::RowVec& rows) {
        Rows names;
        for (const host::RowRef& row : rows) names.push_back(DataOf(*row).mName);
        return names;
    }

    static int DepthOf(const host::RowRef& row) {
        const host::RowRef above = row->GetParentRow();
        return above ? 1 + DepthOf(above) : 0;
    }

    /// The opened rows as the tree names them, two blanks a level.
    Rows Shown() {
        Rows shown;
        for (const host::RowRef& row : mTree->GetOpenedRows())
            shown.push_back(std::string(std::size_t(2 * DepthOf(row)), ' ') + DataOf(*row).mName);
        return shown;
    }

    /// The names of the rows that Qt's view shows.
    Rows ShownByView(bool onlySelected = false) {
        Rows names;
        QModelIndex index = View().model()->index(0, 0);
        for (; index.isValid(); index = View().indexBelow(index))
            if (!onlySelected || View().selectionModel()->isSelected(index))
                names.push_back(
                    DataOf(*static_cast<host::UI_MultiColumnTreeRow*>(index.internalPointer())).mName);
        return names;
    }

    QRect RectOf(const host::RowRef& row) {
        return {0, IndexOf(row) * 25 - ScrollBar().value(), View().viewport()->width(), 25};
    }

    void Click(const host::RowRef& row, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int x = 120) {
        Settle();
        QTest::mouseClick(View().viewport(), Qt::LeftButton, modifiers, RectOf(row).topLeft() + QPoint(x, 12));
        Settle();
    }
    void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&View(), Qt::Key(key), modifiers);
        Settle();
    }

    int IndexOf(const host::RowRef& row) {
        const host::RowVec rows = mTree->GetOpenedRows();
        return int(std::find(rows.begin(), rows.end(), row) - rows.begin());
    }

    /// What has been heard since the last call.
    Rows TakeHeard() {
        Settle();
        return std::exchange(mHeard, {});
    }

    /// What the test notes, and "notice" for what the user is told.
    Rows mHeard;
    ManualMainThread mMainThread;
    QWidget mWindow;
    host::RefPtr<host::UI_Container> mContainer;
    host::RefPtr<host::MediaBrowserMultiColumnTree> mTree;
    host::RefPtr<host::UI_MultiColumnTreeHeaderRow> mHeader;
    std::unique_ptr<QAbstractItemModelTester> mTester;
};
