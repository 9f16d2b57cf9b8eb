#pragma once

#include <absl/container/flat_hash_set.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "desk/files/live/FolderStore.h"
#include "desk/files/live/NameHash.h"

namespace desk {

/// The items of one folder, found by name: 40 bytes and a hash place each, all names in one string. Items have
/// no order after a change. Copied, but not moved; any thread, one at a time.
class FolderItems {
public:
    FolderItems() = default;
    FolderItems(const FolderItems& other);
    FolderItems& operator=(const FolderItems&) = delete;
    enum Flag : std::uint16_t {
        /// Facts have been asked for and have not come.
        kIsAsked = 1,
        /// Newer facts came while they were being read: what is being read does not count.
        kIsOutrun = 2,
        /// The facts could not be read; asked for again after the next change only.
        kIsUnreadable = 4,
    };
    struct Item {
        ItemFacts mFacts;
        std::uint32_t mNameBegin = 0;
        std::uint16_t mNameLength = 0;
        std::uint16_t mFlags = 0;

        bool Has(Flag flag) const { return (mFlags & flag) != 0; }
        void Set(Flag flag, bool on) {
            mFlags = static_cast<std::uint16_t>(on ? mFlags | flag : mFlags & ~flag);
        }
    };

    void Reserve(std::size_t items, std::size_t nameUnits);
    std::size_t Count() const { return mItems.size(); }
    const std::vector<Item>& Get() const { return mItems; }
    std::u16string_view NameOf(const Item& item) const {
        return std::u16string_view(mNames).substr(item.mNameBegin, item.mNameLength);
    }
    /// Null when there is none. Valid until items are added or removed.
    const Item* Find(std::u16string_view name) const;
    Item* Find(std::u16string_view name) { return const_cast<Item*>(std::as_const(*this).Find(name)); }
    /// The same for one who asks for many: `next` is where he looks first, and then the place behind what was
    /// found. Items that are asked for in the order in which they were added cost a comparison each.
    Item* Find(std::u16string_view name, std::size_t& next);
    /// Adds an item whose name is not there yet.
    Item& Add(std::u16string_view name);
    void Remove(std::u16string_view name);

private:
    /// Tells the index the names of the items whose numbers it holds.
    struct NameOfNumber {
        using is_transparent = void;

        std::size_t operator()(std::u16string_view name) const { return HashName(name); }
        std::size_t operator()(std::uint32_t number) const { return HashName(mItems->NameOf(number)); }
        bool operator()(std::uint32_t a, std::uint32_t b) const { return a == b; }
        bool operator()(std::uint32_t number, std::u16string_view name) const {
            return mItems->NameOf(number) == name;
        }

        const FolderItems* mItems;
    };
    std::u16string_view NameOf(std::uint32_t number) const { return NameOf(mItems[number]); }
    void DropUnusedNames();

    std::vector<Item> mItems;
    std::u16string mNames;
    std::size_t mUnusedUnits = 0;
    /// The places of the items in `mItems`.
    absl::flat_hash_set<std::uint32_t, NameOfNumber, NameOfNumber> mIndex{0, NameOfNumber{this},
                                                                          NameOfNumber{this}};
};

}  // namespace desk
