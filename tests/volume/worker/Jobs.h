#pragma once

#include <functional>
#include <string>

class HostProcess;

/// Does one step after another with the production in `folder`, at random, until `goesOn` says no. The `job` is
/// "take", "move", "save", "copy", "duplicate", "add", "save-as", "trash" or "shuffle"; false for another.
bool DoForLong(const std::string& job, HostProcess& host, const std::string& folder, unsigned seed,
               const std::function<bool()>& goesOn);
