#include "fuzz/FuzzTargets.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "Handlers/SharedProjects/SharedProjectsStateData.h"
#include "desk/core/names/LockRecord.h"
#include "host/files/PathUtils.h"

namespace fuzz {

namespace {

using namespace HandlerSharedProjects;

void Require(bool isKept, const char* promise) {
    if (!isKept) throw std::logic_error(promise);
}

std::string MakeSettingsFile(std::string_view input) {
    if (!input.starts_with('t')) return std::string(input.substr(std::min<std::size_t>(input.size(), 1)));
    const UTF16String text = UTF8to16(input.substr(1));
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

bool IsUsable(const SharedProjectsTabView::StateData& state, const UTF16String& production) {
    const UTF16String folder = PathUtils::AddTrailingSlash(production);
    const auto isInside = [&](const UTF16String& path) { return path.starts_with(folder); };
    const SharedProjectsDirectoryView::StateData& tree = state.mDirectoryViewData;
    return std::ranges::all_of(tree.mOpenFolderPaths, isInside) &&
           std::ranges::all_of(tree.mSelectedRowPaths, isInside) &&
           std::ranges::all_of(tree.mHeaderRowData.mColumnDataList,
                               [](const Columns::ColumnData& column) {
                                   return column.mWidth >= 1 && column.mWidth <= 10'000;
                               }) &&
           tree.mHeaderRowData.mColumnDataList.size() <= 5 && state.mZoom >= 0 && state.mZoom <= 1;
}

void ReadPanelSettings(std::string_view input) {
    JSONMemberTexts layouts;
    try {
        layouts = ParseLayouts(MakeSettingsFile(input));
    } catch (const JSONParseError&) {
        return;
    } catch (const JSONBadCast&) {
        return;
    }
    Require(ParseLayouts(FormatLayouts(layouts)) == layouts, "what others have written stays");
    JSONMemberTexts records;
    ProductionStateData read;
    for (const auto& layout : layouts) {
        const UTF16String production = PathUtils::ToNormalizedPath(UTF8to16(layout.first));
        const auto state = FindLayout(layouts, production);
        if (!state) continue;
        Require(IsUsable(*state, production), "what is read can be used");
        records[UTF16to8(production)] = GetJSONString(ToJSON(*state));
        read[production] = *state;
    }
    records = ParseLayouts(FormatLayouts(records));
    for (const auto& [production, state] : read)
        Require(FindLayout(records, production) == state, "records come back as they were written");
}

void ReadLockRecord(std::string_view input) {
    const desk::LockRecord record = desk::ParseLockRecord(std::string(input));
    if (!record.mIsReadable) return;
    const std::string written = desk::WriteLockRecord(record);
    // Escapes make more of some names than a lock file may have.
    if (written.size() > desk::kLockFileLimit) return;
    const desk::LockRecord again = desk::ParseLockRecord(written);
    Require(again.mIsReadable && desk::WriteLockRecord(again) == written,
            "a record comes back as it was written");
}

}  // namespace

void Read(std::string_view name, std::string_view input) {
    if (name == "panel-settings") return ReadPanelSettings(input);
    if (name == "lock-record") return ReadLockRecord(input);
    throw std::invalid_argument("there is no such reader: " + std::string(name));
}

}  // namespace fuzz
