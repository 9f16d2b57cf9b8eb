#pragma once

namespace host {

/// A position in whole view units (device-independent pixels), y downwards.
struct Point {
    int x = 0;
    int y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

/// A rectangle by position and size.
template <class T>
struct RectT {
    T x{};
    T y{};
    T width{};
    T height{};

    T Right() const { return x + width; }
    T Bottom() const { return y + height; }
    friend bool operator==(const RectT&, const RectT&) = default;
};

/// The rectangles of framework views, in whole view units relative to the parent view.
using Rect = RectT<int>;

}  // namespace host
