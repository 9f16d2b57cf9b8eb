#pragma once

#include <map>
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

/// What is remembered of each production, by its normalised path.
using ProductionStateData = std::map<UTF16String, SharedProjectsTabView::StateData>;

/// The settings file's content: the text of one JSON object, with a member for each production, as UTF-16 code
/// units in native order. A byte-order mark is passed over. Throws `JSONParseError` or `JSONBadCast` for
/// anything else.
JSONObject ParseLayouts(const std::string& bytes);
std::string FormatLayouts(const JSONObject& layouts);

/// The productions' records, as far as they can be used. One that is none is left out, which is logged, and a
/// production's second one under another spelling of its path.
ProductionStateData ReadLayouts(const JSONObject& layouts);

}  // namespace HandlerSharedProjects
