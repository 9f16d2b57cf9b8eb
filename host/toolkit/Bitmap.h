#pragma once

#include <memory>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/RefCounted.h"

namespace host {

class UI_ImageSupplyMessage;

/// Names of the host's pictures ("decals") that panels use. The theme draws them.
inline constexpr char kZuProductionPanelNewProjectButtonDecal[] = "kZuProductionPanelNewProjectButtonDecal";
inline constexpr char kProjectNewFolderNormalDecal[] = "kProjectNewFolderNormalDecal";
inline constexpr char kProjectDeleteNormalDecal[] = "kProjectDeleteNormalDecal";
inline constexpr char kHistoryActionDeleteDecal[] = "kHistoryActionDeleteDecal";
inline constexpr char kZuProductionPanelProjectClosedNoLockDecal[] =
    "kZuProductionPanelProjectClosedNoLockDecal";
inline constexpr char kZuProductionPanelProjectClosedLockedDecal[] =
    "kZuProductionPanelProjectClosedLockedDecal";
inline constexpr char kZuProductionPanelProjectOpenNoLockDecal[] = "kZuProductionPanelProjectOpenNoLockDecal";
inline constexpr char kZuProductionPanelProjectOpenLockedDecal[] = "kZuProductionPanelProjectOpenLockedDecal";
inline constexpr char kZuProductionPanelProjectOpenEditableDecal[] =
    "kZuProductionPanelProjectOpenEditableDecal";

/// Makes pictures; there is one for the screen.
class DrawSupplier;
/// The supplier for the screen; never null. UI thread.
ZUHOST_API DrawSupplier* GetDefaultDrawSupplier();

/// A named picture of the host. Sharp at every size and scale; follows the theme. A cheap value: copies
/// share the picture. UI thread.
class ZUHOST_API Bitmap {
public:
    /// No picture.
    Bitmap() = default;

    /// The picture of that name; not valid when the theme has none. It is loaded when first drawn.
    static Bitmap GetBitmap(std::string_view name, DrawSupplier* supplier);

    bool IsValid() const { return mPicture != nullptr; }

    /// Supplies this picture to an image control; `decal` names the variant, empty for the normal one.
    void FillPictureSupplyMessage(UI_ImageSupplyMessage& message, std::string_view decal) const;

    struct Picture;
    const Picture* GetPicture() const { return mPicture; }

private:
    const Picture* mPicture = nullptr;
};

/// A picture that was made for the panel and is shared by reference. UI thread.
class ZUHOST_API Picture : public RefCounted {
public:
    ~Picture() override;
};
using PictureRef = RefPtr<Picture>;

/// Makes the picture of a folder as the desktop shows it, for sizes up to `width` x `height` pixels.
/// UI thread.
ZUHOST_API PictureRef GetGenericFolderIcon(DrawSupplier* supplier, int width, int height);

}  // namespace host
