#include "desk/files/live/FolderItems.h"

namespace desk {

static_assert(sizeof(FolderItems::Item) <= 88);

void FolderItems::Reserve(std::size_t items, std::size_t nameUnits) {
    mItems.reserve(items);
    mNames.reserve(nameUnits);
    mIndex.Reserve(items, NamesByNumber());
}

const FolderItems::Item* FolderItems::Find(std::u16string_view name) const {
    const std::uint32_t number = mIndex.Find(name, NamesByNumber());
    return number == 0 ? nullptr : &mItems[number - 1];
}

FolderItems::Item& FolderItems::Add(std::u16string_view name) {
    // A few new files in a large folder must not double its memory.
    if (mItems.size() == mItems.capacity()) mItems.reserve(mItems.size() + mItems.size() / 8 + 8);
    Item& item = mItems.emplace_back();
    item.mNameBegin = static_cast<std::uint32_t>(mNames.size());
    item.mNameLength = static_cast<std::uint16_t>(name.size());
    mNames += name;
    mIndex.Add(static_cast<std::uint32_t>(mItems.size()), NamesByNumber());
    return item;
}

void FolderItems::Remove(std::u16string_view name) {
    const std::uint32_t number = mIndex.Find(name, NamesByNumber());
    if (number == 0) return;
    mIndex.Remove(name, NamesByNumber());
    mUnusedUnits += mItems[number - 1].mNameLength;
    if (number != mItems.size()) {
        mIndex.Replace(NameOf(mItems.back()), number, NamesByNumber());
        mItems[number - 1] = std::move(mItems.back());
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
