#include <QTest>
#include <thread>

#include "desk/toolkit/TreeImpl.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

/// Counts what the tree asks the panel of rows, and what the store asks the disk.
class CostTest : public PanelFixture {
protected:
    /// A call about many rows counts as one for each.
    template <class Result, class... Arguments>
    void Count(SharedFunction<Result(Arguments...)>& callback) {
        callback = std::make_shared<std::function<Result(Arguments...)>>(
            [this, callback](Arguments... arguments) -> Result {
                const auto rowsIn = [](const auto& argument) {
                    if constexpr (requires { argument.size(); }) return static_cast<int>(argument.size());
                    return 1;
                };
                mCalls += std::get<0>(std::tuple(rowsIn(arguments)...));
                return (*callback)(arguments...);
            });
    }

    /// Once nothing is asked for a while: a sorting may wait for more facts.
    int TakeCalls() {
        int all = 0;
        for (int quietRounds = 0; quietRounds < 3;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
            Settle();
            mFrame.Window().grab();
            Settle();
            const int disk = mDisk.Count(Operation::Status) + mDisk.Count(Operation::ListFolder);
            mDisk.ResetCounts();
            const int calls = disk + std::exchange(mCalls, 0);
            quietRounds = calls == 0 ? quietRounds + 1 : 0;
            all += calls;
        }
        return all;
    }

    struct Cost {
        int mOpening = 0, mScrolling = 0, mKey = 0, mChange = 0, mSorting = 0, mChangeOfSize = 0;
    };

    /// Folders of 20 projects, all opened.
    Cost Measure(int folders) {
        ClosePanel();
        mProduction = "Of " + std::to_string(folders);
        for (int i = 0; i < 20 * folders; ++i)
            MakeProject("F " + std::to_string(i / 20) + "/P " + std::to_string(i), std::string(i % 13, 'x'));
        OpenProduction(mProduction);
        desk::TreeCallbacks& callbacks = UI_MultiColumnTree::TreeImpl::Of(*Tree()).mCallbacks;
        Count(callbacks.mCanRowHaveChildren);
        Count(callbacks.mSortData);
        Count(callbacks.mRowsSortData);
        Count(callbacks.mRowsSortNumbers);
        Count(callbacks.mVisibilityChanged);
        Count(callbacks.mOpenStateChanged);
        TakeCalls();
        Cost cost;
        for (int i = 0; i < folders; ++i) Tree()->OpenRow(RowOf("F " + std::to_string(i)).get());
        EXPECT_TRUE(Shows([&] { return Tree()->CountOpenedRows() == std::size_t(21 * folders); }));
        cost.mOpening = TakeCalls();
        Tree()->ScrollRowToTop(RowOf("F 5").get());
        cost.mScrolling = TakeCalls();
        Select({"F 5/P 102"});
        TakeCalls();
        QTest::keyClick(&TreeWidget(), Qt::Key_Down);
        cost.mKey = TakeCalls();
        // A colleague's changes.
        MakeProject("F 5/P 102x", "new");
        EXPECT_TRUE(Shows([&] { return FindRow("F 5/P 102x") != nullptr; }));
        cost.mChange = TakeCalls();
        DirectoryView().GetHeaderRow()->SetSortColumn(Columns::kSizeColumnID);
        EXPECT_TRUE(Shows([&] { return LastOfFolder() == RowOf("F 5/P 116"); }));
        cost.mSorting = TakeCalls();
        MakeProject("F 5/P 100", std::string(2000, 'x'));
        EXPECT_TRUE(Shows([&] { return LastOfFolder() == RowOf("F 5/P 100"); }));
        cost.mChangeOfSize = TakeCalls();
        return cost;
    }

    RowRef LastOfFolder() { return RowOf("F 5")->GetChildRows().back(); }

    int mCalls = 0;
};

TEST_F(CostTest, GrowsWithWhatIsOpenedAndSeenNotWithWhatIsThere) {
    const Cost few = Measure(10);
    const Cost many = Measure(40);
    EXPECT_LE(many.mOpening, 5 * few.mOpening);
    EXPECT_LE(many.mOpening, 20 * 40 * 8);
    EXPECT_LE(many.mSorting, 5 * few.mSorting);
    for (const auto figure : {&Cost::mScrolling, &Cost::mKey, &Cost::mChange, &Cost::mChangeOfSize})
        EXPECT_LE(many.*figure, few.*figure + 20) << many.*figure;
}

}  // namespace HandlerSharedProjects
