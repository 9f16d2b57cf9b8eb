#pragma once

#include <map>
#include <optional>
#include <string>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/JSON.h"

namespace HandlerSharedProjects {

namespace Columns {

/// The records' form in the settings file, as for all of `host/core/JSON.h`: members are absent or of their
/// type.
JSONVariant ToJSON(const ColumnData& data);
JSONVariant ToJSON(const HeaderRowData& data);
void FromJSON(const JSONVariant& json, ColumnData& data);
void FromJSON(const JSONVariant& json, HeaderRowData& data);

}  // namespace Columns

JSONVariant ToJSON(const SharedProjectsDirectoryView::StateData& data);
JSONVariant ToJSON(const SharedProjectsTabView::StateData& data);
void FromJSON(const JSONVariant& json, SharedProjectsDirectoryView::StateData& data);
void FromJSON(const JSONVariant& json, SharedProjectsTabView::StateData& data);

/// The most paths of a kind that are remembered for a production.
inline constexpr std::size_t kMostRememberedPaths = 10'000;

/// Leaves of a record what can be used for the production (a normalised path), and gives what cannot its
/// default: paths that do not lie in the production go, and numbers outside their range. A list of more open
/// folders than `kMostRememberedPaths` is cut; of more selected rows it is emptied, since a part of a selection
/// is another one.
void MakeUsable(SharedProjectsTabView::StateData& state, const UTF16String& production);

/// What is remembered of productions, by their normalised paths.
using ProductionStateData = std::map<UTF16String, SharedProjectsTabView::StateData>;

/// The settings file's content: the text of one JSON object, with a member for each production, as UTF-16 code
/// units in native order. A byte-order mark is passed over. Throws `JSONParseError` or `JSONBadCast` for
/// anything else. The members stay as they were written.
JSONMemberTexts ParseLayouts(const std::string& bytes);
std::string FormatLayouts(const JSONMemberTexts& layouts);

/// A production's record, as far as it can be used; `production` is normalised. What this program writes,
/// under that path, counts before another spelling of it. Absent when there is none, or none that is a record,
/// which is logged.
std::optional<SharedProjectsTabView::StateData> FindLayout(const JSONMemberTexts& layouts,
                                                           const UTF16String& production);

}  // namespace HandlerSharedProjects
