#pragma once

namespace desk {

/// Cut and Paste while the keyboard is in a panel's tree. UI thread.
class RowEditing {
public:
    RowEditing();
    /// Gives the commands up.
    ~RowEditing();
    RowEditing(const RowEditing&) = delete;
    RowEditing& operator=(const RowEditing&) = delete;
};

}  // namespace desk
