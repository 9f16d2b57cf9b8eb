#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Handlers/SharedProjects/SharedProjectsStateData.h"
#include "tests/support/LogExpectation.h"

namespace HandlerSharedProjects {
namespace {

using PanelState = SharedProjectsTabView::StateData;

const UTF16String kProduction = u"/Volumes/North Shore";
/// Names that no UTF-8 holds, and those that JSON escapes.
const UTF16String kOddPath = kProduction + u"/Caf\u00e9 \U0001F3AC \"1\\2\"\n\xDCFF";

PanelState MakeState() {
    PanelState state;
    state.mDirectoryViewData.mOpenFolderPaths = {kProduction + u"/Reels/Day 1", kOddPath};
    state.mDirectoryViewData.mSelectedRowPaths = {kOddPath, kProduction + u"/Reels/Reel 1.zuproj"};
    state.mDirectoryViewData.mTopVisibleRowPath = kOddPath;
    state.mDirectoryViewData.mHeaderRowData = {
        {{Columns::kSizeColumnID, 213.3f}, {Columns::kNameColumnID, 71.123456f}},
        Columns::kSizeColumnID,
        false};
    state.mZoom = 0.3f;
    state.mFloatingWindowGlobalRect = {-1200, 40, 700, 500};
    state.mSearchText = u"\u00fcber";
    return state;
}

std::string InUTF16(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

PanelState Read(const UTF16String& json) {
    PanelState state = MakeState();
    FromJSON(JSONParse(json), state);
    return state;
}

TEST(StateData, IsTheSameAfterTheWayThroughTheFile) {
    const JSONMemberTexts layouts = {{UTF16to8(kProduction), GetJSONString(ToJSON(MakeState()))},
                                     {"/Volumes/\xFFld", GetJSONString(ToJSON(PanelState()))}};
    const std::string bytes = FormatLayouts(layouts);
    EXPECT_EQ(bytes.substr(0, 4), InUTF16(u"{\"")) << "no byte-order mark";
    for (const std::string& content : {bytes, InUTF16(u"\uFEFF") + bytes}) {
        const JSONMemberTexts read = ParseLayouts(content);
        EXPECT_EQ(read, layouts);
        EXPECT_EQ(FindLayout(read, kProduction), MakeState());
        EXPECT_EQ(FindLayout(read, u"/Volumes/\xDCFFld"), PanelState());
    }
}

TEST(StateData, OtherRecordsStayAsTheyWereWritten) {
    EXPECT_TRUE(ParseLayouts(InUTF16(u" { } ")).empty());
    const JSONMemberTexts read =
        ParseLayouts(InUTF16(u"\n{ \"/a\\u00e9\\\"}\" :\t{\"x}\\\"\": [1.50, [{}], \",\"] }\r\n, \"/b\":5 ,"
                             u"\"/c\": \"old\", \"\":[],\"/c\": \"\xDCFF\\\\\"}\n"));
    EXPECT_EQ(read, (JSONMemberTexts{{"/a\u00e9\"}", u"{\"x}\\\"\": [1.50, [{}], \",\"] }"},
                                     {"/b", u"5"},
                                     {"", u"[]"},
                                     {"/c", u"\"\xDCFF\\\\\""}}));
    EXPECT_EQ(ParseLayouts(FormatLayouts(read)), read);
}

TEST(StateData, WhatIsAbsentHasItsDefaultAndWhatIsUnknownIsPassedOver) {
    EXPECT_EQ(Read(u"{}"), PanelState());
    EXPECT_EQ(
        Read(u"{\"mDirectoryViewData\": {\"mHeaderRowData\": {\"mColumnDataList\": []}}, \"mNewer\": [{}]}"),
        [] {
            PanelState state;
            state.mDirectoryViewData.mHeaderRowData.mSortAscending = false;
            return state;
        }());
    for (const char16_t* wrong :
         {u"[]", u"{\"mZoom\": \"1\"}", u"{\"mDirectoryViewData\": 5}", u"{\"mSearchText\": null}",
          u"{\"mFloatingWindowGlobalRect\": {\"left\": 1.5}}", u"{\"mDockedInMainWindow\": 1}",
          u"{\"mFloatingWindowGlobalRect\": {\"width\": 2147483648}}",
          u"{\"mDirectoryViewData\": {\"mOpenFolderPaths\": [1]}}",
          u"{\"mDirectoryViewData\": {\"mHeaderRowData\": {\"mSortColumnID\": -1}}}"})
        EXPECT_THROW(Read(wrong), JSONBadCast) << UTF16to8(wrong);
}

TEST(StateData, AFileThatIsNoneIsRefused) {
    const std::u16string deep(100'000, u'[');
    const std::u16string many = u"{\"a\": [" + [] {
        std::u16string values;
        for (int i = 0; i < 4'000'000; ++i) values += u"0,";
        return values;
    }() + u"0]}";
    for (const std::string& bytes :
         {std::string(), InUTF16(u"{\"/a\": {"), InUTF16(u"{}") + "x", std::string("{\"/a\": {}}"),
          InUTF16(u"[]"), InUTF16(u"{\"/a\": {\"mZoom\": NaN}}"), InUTF16(u"{\"/a\": {\"mZoom\": 1e999}}"),
          InUTF16(deep), InUTF16(u"{\"/a\": " + deep), InUTF16(u"7"), InUTF16(many)})
        EXPECT_ANY_THROW(ParseLayouts(bytes)) << bytes.substr(0, 40);
}

TEST(StateData, WhatCannotBeUsedHasItsDefaultAndEveryOtherProductionItsEntry) {
    std::u16string paths;
    for (int i = 0; i < 1'000'000; ++i)
        paths += (i ? u",\"/Volumes/A/Reel " : u"\"/Volumes/A/Reel ") +
                 NumberToString(static_cast<long long>(i)) + u'"';
    const JSONMemberTexts others = {{UTF16to8(kProduction), GetJSONString(ToJSON(MakeState()))}};
    const UTF16String text =
        u"{\"/Volumes/A//\": {\"mZoom\": 7, \"mDirectoryViewData\": {\"mSelectedRowPaths\": [" + paths +
        u"], \"mOpenFolderPaths\": [\"/Volumes/A/x\", \"/Volumes/AB\", \"/Volumes/A/../B\", "
        u"\"/Volumes/A\", \"/Volumes/A//y/\", \"\"]}}, \"/b\": 5, \"/c\": {\"mZoom\": []}, " +
        GetJSONString(others).substr(1);
    const JSONMemberTexts read = ParseLayouts(InUTF16(text));
    EXPECT_EQ(FindLayout(read, kProduction), MakeState());
    ExpectLogged number("\"/b\" cannot be used");
    ExpectLogged zoom("\"/c\" cannot be used");
    EXPECT_FALSE(FindLayout(read, u"/b") || FindLayout(read, u"/c") || FindLayout(read, u"/d"));
    const PanelState usable = FindLayout(read, u"/Volumes/A").value();
    EXPECT_EQ(usable.mZoom, 0);
    EXPECT_TRUE(usable.mDirectoryViewData.mSelectedRowPaths.empty()) << "a part of a selection is another one";
    EXPECT_EQ(usable.mDirectoryViewData.mOpenFolderPaths, (UTF16StringVec{u"/Volumes/A/x", u"/Volumes/A/y"}));
}

TEST(StateData, ColumnsAndPlacesThatNobodyCanHaveSetHaveTheirDefaults) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    PanelState state = MakeState();
    state.mZoom = kNone;
    state.mFloatingWindowGlobalRect = {0, 0, 700, -500};
    state.mSearchText = UTF16String(100'000, u'x');
    state.mDirectoryViewData.mTopVisibleRowPath = u"/etc/passwd";
    state.mDirectoryViewData.mHeaderRowData.mColumnDataList = {
        {Columns::kSizeColumnID, kNone},      {12345, 100},
        {Columns::kNameColumnID, -5},         {Columns::kSizeColumnID, 100},
        {Columns::kLockedColumnID, 1e30f},    {0, 0},
        {Columns::kCreationDateColumnID, 150}};
    MakeUsable(state, kProduction);
    EXPECT_EQ(state.mZoom, 0);
    EXPECT_EQ(state.mFloatingWindowGlobalRect, Rect());
    EXPECT_TRUE(state.mSearchText.empty() && state.mDirectoryViewData.mTopVisibleRowPath.empty());
    EXPECT_EQ(state.mDirectoryViewData.mHeaderRowData.mColumnDataList,
              (std::vector<Columns::ColumnData>{{Columns::kSizeColumnID, 200},
                                                {Columns::kNameColumnID, 200},
                                                {Columns::kLockedColumnID, 200},
                                                {Columns::kCreationDateColumnID, 150}}));
}

}  // namespace
}  // namespace HandlerSharedProjects
