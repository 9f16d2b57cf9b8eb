#pragma once

#include <functional>
#include <memory>

#include "host/toolkit/Bitmap.h"
#include "host/toolkit/UI_ControlView.h"

namespace host {

/// The state flag under which an image is asked for in its normal, enabled state.
inline constexpr unsigned kImageStateEnabled = 4;

/// Asks for the image of a control, and takes the answer: a bitmap or a picture, the last one supplied.
class UI_ImageSupplyMessage {
public:
    /// The state in which the image is to be shown: `kImageStateEnabled`, or 0 for a disabled control.
    unsigned GetStateFlags() const { return mStateFlags; }
    void SetStateFlags(unsigned flags) { mStateFlags = flags; }

    /// Answers with a copy of `bitmap`, in place of what was supplied before.
    void SupplyBitmap(const Bitmap& bitmap) {
        mBitmap = bitmap;
        mPicture.reset();
    }
    /// Answers with a picture, which is shared, in place of what was supplied before.
    void SupplyPicture(PictureRef picture) {
        mPicture = std::move(picture);
        mBitmap = {};
    }

    /// The answer: at most one of the two is there.
    const Bitmap& GetBitmap() const { return mBitmap; }
    const PictureRef& GetPicture() const { return mPicture; }

private:
    unsigned mStateFlags = 0;
    Bitmap mBitmap;
    PictureRef mPicture;
};

/// An image, scaled into its rectangle. UI thread.
class ZUHOST_API UI_StaticImage : public UI_ControlView {
public:
    UI_StaticImage();
    ~UI_StaticImage() override;

    using SupplyFunction = std::function<void(UI_ImageSupplyMessage&)>;

    /// The function that is asked for the image each time it is drawn.
    void SetImageSupplyFunction(SupplyFunction function);
};

}  // namespace host
