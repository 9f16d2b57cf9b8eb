#include "desk/files/live/FolderItems.h"

namespace desk {

static_assert(sizeof(FolderItems::Item) <= 88);

FolderItems::FolderItems(const FolderItems& other)
    : mItems(other.mItems), mNames(other.mNames), mUnusedUnits(other.mUnusedUnits) {
    mIndex.reserve(mItems.size());
    for (std::uint32_t number = 0; number < mItems.size(); ++number) mIndex.insert(number);
}

void FolderItems::Reserve(std::size_t items, std::size_t nameUnits) {
    mItems.reserve(items);
    mNames.reserve(nameUnits);
    mIndex.reserve(items);
}

const FolderItems::Item* FolderItems::Find(std::u16string_view name) const {
    const auto found = mIndex.find(name);
    return found == mIndex.end() ? nullptr : &mItems[*found];
}

FolderItems::Item* FolderItems::Find(std::u16string_view name, std::size_t& next) {
    Item* item = next < mItems.size() && NameOf(mItems[next]) == name ? &mItems[next] : Find(name);
    if (item) next = static_cast<std::size_t>(item - mItems.data()) + 1;
    return item;
}

FolderItems::Item& FolderItems::Add(std::u16string_view name) {
    // A few new files in a large folder must not double its memory.
    if (mItems.size() == mItems.capacity()) mItems.reserve(mItems.size() + mItems.size() / 8 + 8);
    Item& item = mItems.emplace_back();
    item.mNameBegin = static_cast<std::uint32_t>(mNames.size());
    item.mNameLength = static_cast<std::uint16_t>(name.size());
    mNames += name;
    mIndex.insert(static_cast<std::uint32_t>(mItems.size() - 1));
    return item;
}

void FolderItems::Remove(std::u16string_view name) {
    const auto found = mIndex.find(name);
    if (found == mIndex.end()) return;
    const std::uint32_t number = *found;
    mIndex.erase(found);
    mUnusedUnits += mItems[number].mNameLength;
    if (number != mItems.size() - 1) {
        mIndex.erase(NameOf(mItems.back()));
        mItems[number] = std::move(mItems.back());
        mIndex.insert(number);
    }
    mItems.pop_back();
    if (mUnusedUnits > 1024 && mUnusedUnits > mNames.size() / 2) DropUnusedNames();
}

void FolderItems::DropUnusedNames() {
    std::u16string names;
    names.reserve(mNames.size() - mUnusedUnits);
    for (Item& item : mItems) {
        const std::u16string_view name = NameOf(item);
        item.mNameBegin = static_cast<std::uint32_t>(names.size());
        names += name;
    }
    mNames = std::move(names);
    mUnusedUnits = 0;
}

}  // namespace desk
