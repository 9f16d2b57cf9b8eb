#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace desk {

/// Finds values by the names they bear, without holding the names: a hash table of bare values (open
/// addressing, at most 2/3 full). `Value()` marks an empty place. Operations take the function that gives a
/// value's name, the same each time: a string view or what has its size, its units and its comparison. A value
/// type; any thread, one at a time.
template <class Value>
class NameIndex {
public:
    std::size_t Count() const { return mCount; }

    template <class NameOf>
    void Reserve(std::size_t count, const NameOf& nameOf) {
        std::size_t places = 8;
        while (places * 2 < count * 3) places *= 2;
        if (places <= mPlaces.size()) return;
        const std::vector<Value> old = std::exchange(mPlaces, std::vector<Value>(places));
        for (const Value& value : old)
            if (value != Value()) Put(value, nameOf);
    }
    /// The value with that name, or `Value()`.
    template <class Name, class NameOf>
    Value Find(const Name& name, const NameOf& nameOf) const {
        return mPlaces.empty() ? Value() : mPlaces[PlaceOf(name, nameOf)];
    }
    /// Adds a value whose name no other bears.
    template <class NameOf>
    void Add(Value value, const NameOf& nameOf) {
        Reserve(++mCount, nameOf);
        Put(value, nameOf);
    }
    /// Puts `value` in the place of the value of the same name, which must be there.
    template <class Name, class NameOf>
    void Replace(const Name& name, Value value, const NameOf& nameOf) {
        mPlaces[PlaceOf(name, nameOf)] = value;
    }
    /// Removes the value with that name, which must be there.
    template <class Name, class NameOf>
    void Remove(const Name& name, const NameOf& nameOf) {
        std::size_t hole = PlaceOf(name, nameOf);
        --mCount;
        for (std::size_t i = Next(hole); mPlaces[i] != Value(); i = Next(i)) {
            const std::size_t home = HomeOf(nameOf(mPlaces[i]));
            const bool isReachedWithoutHole = hole < i ? home > hole && home <= i : home > hole || home <= i;
            if (!isReachedWithoutHole) mPlaces[std::exchange(hole, i)] = mPlaces[i];
        }
        mPlaces[hole] = Value();
    }

private:
    /// FNV-1a, whose high bits are the better ones.
    template <class Name>
    std::size_t HomeOf(const Name& name) const {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (std::size_t i = 0; i < name.size(); ++i) hash = (hash ^ name[i]) * 0x100000001B3;
        return (hash ^ hash >> 32) & (mPlaces.size() - 1);
    }
    std::size_t Next(std::size_t place) const { return (place + 1) & (mPlaces.size() - 1); }
    template <class Name, class NameOf>
    std::size_t PlaceOf(const Name& name, const NameOf& nameOf) const {
        std::size_t i = HomeOf(name);
        while (mPlaces[i] != Value() && !(nameOf(mPlaces[i]) == name)) i = Next(i);
        return i;
    }
    template <class NameOf>
    void Put(Value value, const NameOf& nameOf) {
        std::size_t i = HomeOf(nameOf(value));
        while (mPlaces[i] != Value()) i = Next(i);
        mPlaces[i] = value;
    }

    std::vector<Value> mPlaces;
    std::size_t mCount = 0;
};

}  // namespace desk
