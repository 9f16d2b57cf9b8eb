#include "desk/toolkit/Theme.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QHash>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QSvgRenderer>
#include <QVariant>
#include <array>
#include <cmath>
#include <string>

#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/ShapedText.h"
#include "desk/toolkit/ThemeStyleSheet.h"

namespace desk {

namespace {

using Colors = std::array<QRgb, 16>;

// In the order of ThemeColor.
constexpr Colors kDark{0xff22262c, 0xff1d2025, 0xff1b1e23, 0xff262a31, 0xff353a42, 0xffe6e9ef,
                       0xff9aa1ac, 0xff5d646e, 0xff4a90e2, 0xff2b4f7e, 0xffffffff, 0xffd9b25f,
                       0xffc7ccd6, 0xffe0605a, 0xff59c27a, 0xff15171a};
constexpr Colors kLight{0xfff3f4f6, 0xffe4e7eb, 0xffffffff, 0xffeceef1, 0xffcbd0d7, 0xff1f2328,
                        0xff59616c, 0xffa3aab4, 0xff1f6fd0, 0xffcfe2fa, 0xff10233c, 0xffd9a53f,
                        0xff454c57, 0xffc8362f, 0xff23864a, 0xffffffff};

constexpr int kFontPixels = 13;

struct PictureKey {
    std::string mName;
    qreal mSize;
    qreal mRatio;
    bool mEnabled;
    friend bool operator==(const PictureKey&, const PictureKey&) = default;
};

size_t qHash(const PictureKey& key, size_t seed) {
    return qHashMulti(seed, QByteArrayView(key.mName), key.mSize, key.mRatio, key.mEnabled);
}

/// Bounds the memory of rendered pictures: a zoom asks for many sizes.
constexpr int kMaximumCachedPictures = 400;

ThemeKind currentKind = ThemeKind::Dark;

QHash<PictureKey, QPixmap>& Pictures() {
    static QHash<PictureKey, QPixmap> pictures;
    return pictures;
}

/// Fusion, with tool tips that come after a widget's own time.
class ThemeStyle : public QProxyStyle {
public:
    ThemeStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        if (hint == SH_ToolTip_WakeUpDelay && widget) {
            const QVariant delay = widget->property(kToolTipDelayProperty);
            if (delay.isValid() && delay.toInt() >= 0) return delay.toInt();
        }
        // A grey entry tells its reason when the pointer or the keys come to it.
        if (hint == SH_Menu_AllowActiveAndDisabled) return 1;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }

    /// Fusion draws a box's outline darker than the window, which a dark window swallows.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element != PE_IndicatorCheckBox) return;
        painter->save();
        painter->setPen(Theme::Color(ThemeColor::SecondaryText));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }
};

QPalette MakePalette() {
    using enum ThemeColor;
    QPalette palette(Theme::Color(HeaderBackground), Theme::Color(WindowBackground));
    const auto set = [&](QPalette::ColorRole role, ThemeColor color) {
        palette.setColor(role, Theme::Color(color));
    };
    set(QPalette::Window, WindowBackground);
    set(QPalette::WindowText, Text);
    set(QPalette::Base, FieldBackground);
    set(QPalette::AlternateBase, TreeBackground);
    set(QPalette::Text, Text);
    set(QPalette::Button, HeaderBackground);
    set(QPalette::ButtonText, Text);
    set(QPalette::BrightText, LockedIcon);
    set(QPalette::PlaceholderText, SecondaryText);
    set(QPalette::ToolTipBase, HeaderBackground);
    set(QPalette::ToolTipText, Text);
    set(QPalette::Highlight, Selection);
    set(QPalette::HighlightedText, SelectionText);
    set(QPalette::Link, Accent);
    set(QPalette::LinkVisited, Accent);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText})
        palette.setColor(QPalette::Disabled, role, Theme::Color(DisabledText));
    return palette;
}

QFont MakeFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    if (QFontDatabase::families().contains(QStringLiteral("Inter"))) font.setFamily(QStringLiteral("Inter"));
    font.setPixelSize(kFontPixels);
    return font;
}

/// The pictures are drawn in stand-in colours, one for each role.
QByteArray WithRoleColors(QByteArray svg, bool enabled) {
    using enum ThemeColor;
    const std::pair<const char*, ThemeColor> roles[] = {{"#010101", IconStroke},     {"#020202", FolderIcon},
                                                        {"#030303", LockedIcon},     {"#040404", EditableIcon},
                                                        {"#050505", TreeBackground}, {"#060606", Accent},
                                                        {"#070707", SecondaryText},  {"#080808", Text}};
    for (const auto& [standIn, role] : roles) {
        const bool isBackground = role == TreeBackground;
        const QColor color = Theme::Color(enabled || isBackground ? role : DisabledText);
        svg.replace(standIn, color.name().toLatin1());
    }
    return svg;
}

QPixmap Render(const PictureKey& key) {
    QFile file(QStringLiteral(":/pictures/%1.svg").arg(ToQStringFromUTF8(key.mName)));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QSvgRenderer renderer(WithRoleColors(file.readAll(), key.mEnabled));
    const int pixels = std::max(1, int(std::lround(key.mSize * key.mRatio)));
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    picture.setDevicePixelRatio(key.mRatio);
    return picture;
}

}  // namespace

void Theme::Apply(ThemeKind kind) {
    currentKind = kind;
    Pictures().clear();
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(MakePalette());
    QApplication::setFont(MakeFont());
    ClearTextCaches();
    qApp->setStyleSheet(MakeStyleSheet());
}

ThemeKind Theme::CurrentKind() {
    return currentKind;
}

QColor Theme::Color(ThemeColor color) {
    return QColor((currentKind == ThemeKind::Dark ? kDark : kLight)[static_cast<std::size_t>(color)]);
}

QPixmap Theme::Picture(std::string_view name, qreal size, qreal devicePixelRatio, bool enabled) {
    PictureKey key{std::string(name), size, devicePixelRatio, enabled};
    const auto found = Pictures().constFind(key);
    if (found != Pictures().constEnd()) return *found;
    if (Pictures().size() >= kMaximumCachedPictures) Pictures().clear();
    const QPixmap picture = Render(key);
    Pictures().insert(std::move(key), picture);
    return picture;
}

}  // namespace desk
