#pragma once

/// Marks what a host library offers to panels. A host library is built with hidden visibility;
/// everything declared in `host/` that has a definition carries this mark.
#define ZUHOST_API __attribute__((visibility("default")))
