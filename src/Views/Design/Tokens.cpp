#include "Tokens.h"

#include "Contrast.h"
#include "KeyCaps.h"

#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>

#include <algorithm>

namespace tessly {

namespace {

// Of text against what is behind it, and of symbols.
constexpr double textContrast = 4.5;
constexpr double symbolContrast = 3;

/// Where fills and symbols are both darker than what is around them, the symbols come close to
/// them.
constexpr double symbolAccentContrast = 4.5;

/// Of a banner against the selected row that may be under it.
constexpr double bannerContrast = 1.25;

/// Changes a colour's lightness step by step until it serves, or is black or white.
template <typename Serves>
QColor adjusted(QColor color, float step, Serves serves)
{
    color.setAlphaF(1);
    while (!serves(color)) {
        float hue = 0;
        float saturation = 0;
        float lightness = 0;
        color.getHslF(&hue, &saturation, &lightness);
        if (lightness <= 0.0F && step < 0.0F) {
            break;
        }
        if (lightness >= 1.0F && step > 0.0F) {
            break;
        }
        // A colour without a hue tells -1, which is not taken back.
        color = QColor::fromHslF(
            std::max(hue, 0.0F), saturation, std::clamp(lightness + step, 0.0F, 1.0F));
    }
    return color;
}

void setLight(TokenColors& colors)
{
    colors.panel = QColor(0xF7, 0xF7, 0xF8);
    colors.text = QColor(0x1D, 0x1D, 0x1F);
    colors.secondaryText = QColor(0x5A, 0x5A, 0x60);
    colors.border = over(withOpacity(Qt::black, 0.24F), colors.panel);
    colors.shadowedBorder = over(withOpacity(Qt::black, 0.1F), colors.panel);
    colors.cardShadow = withOpacity(Qt::black, 0.24F);
    colors.divider = withOpacity(Qt::black, 0.12F);
    colors.pin = QColor(0xC7, 0x62, 0x00);
    colors.bannerWarning = QColor(0xAD, 0x57, 0x00);
    colors.bannerError = QColor(0xC6, 0x28, 0x28);
    colors.popup = QColor(0xFF, 0xFF, 0xFF);
    colors.destructive = QColor(0xC6, 0x28, 0x28);
    colors.window = QColor(0xF1, 0xF1, 0xF3);
    colors.group = QColor(0xFF, 0xFF, 0xFF);
    colors.tertiaryText = QColor(0x66, 0x66, 0x6C);
    colors.button = QColor(0xFF, 0xFF, 0xFF);
    colors.buttonBorder = withOpacity(Qt::black, 0.2F);
    colors.switchOff = QColor(0x8C, 0x8C, 0x92);
    colors.switchOffBorder = colors.switchOff;
    colors.good = QColor(0x1A, 0x76, 0x35);
    colors.attention = QColor(0x9A, 0x55, 0x00);
    colors.scrim = withOpacity(Qt::black, 0.3F);
}

void setDark(TokenColors& colors)
{
    colors.panel = QColor(0x28, 0x28, 0x2B);
    colors.text = QColor(0xF2, 0xF2, 0xF4);
    colors.secondaryText = QColor(0xAE, 0xAE, 0xB5);
    colors.border = over(withOpacity(Qt::white, 0.22F), colors.panel);
    // Over dark windows the shadow alone tells little.
    colors.shadowedBorder = over(withOpacity(Qt::white, 0.16F), colors.panel);
    colors.cardShadow = withOpacity(Qt::black, 0.55F);
    colors.divider = withOpacity(Qt::white, 0.12F);
    colors.pin = QColor(0xFF, 0x9F, 0x0A);
    colors.bannerWarning = QColor(0xA8, 0x54, 0x00);
    colors.bannerError = QColor(0xC4, 0x2B, 0x2B);
    colors.popup = QColor(0x34, 0x34, 0x38);
    colors.destructive = QColor(0xFF, 0x8A, 0x82);
    colors.window = QColor(0x25, 0x25, 0x28);
    colors.group = QColor(0x2F, 0x2F, 0x33);
    colors.tertiaryText = QColor(0x9C, 0x9C, 0xA4);
    colors.button = QColor(0x3E, 0x3E, 0x43);
    colors.buttonBorder = withOpacity(Qt::white, 0.16F);
    colors.switchOff = QColor(0x56, 0x56, 0x5C);
    colors.switchOffBorder = QColor(0x84, 0x84, 0x8C);
    colors.good = QColor(0x4B, 0xC4, 0x5E);
    colors.attention = QColor(0xF2, 0xA8, 0x3B);
    colors.scrim = withOpacity(Qt::black, 0.45F);
}

} // namespace

TokenColors tokenColors(const QPalette& palette)
{
    TokenColors colors;
    const bool isDark = contrastRatio(palette.color(QPalette::Window), Qt::black) <
                        contrastRatio(palette.color(QPalette::WindowText), Qt::black);
    isDark ? setDark(colors) : setLight(colors);

    colors.onAccent = Qt::white;
    colors.onAccentSecondary = withOpacity(Qt::white, 0.76F);
    colors.tileOnAccent = withOpacity(Qt::white, 0.16F);
    colors.keyCapOnAccent = withOpacity(Qt::white, 0.18F);
    colors.onBanner = Qt::white;
    colors.shadow = withOpacity(Qt::black, 0.33F);

    const QColor highlight = palette.color(QPalette::Highlight);
    colors.accent = adjusted(highlight, -0.01F, [&colors](const QColor& accent) {
        const auto readable = [](const QColor& text, const QColor& behind) {
            return contrastRatio(over(text, behind), behind) >= textContrast;
        };
        return readable(colors.onAccentSecondary, accent) &&
               readable(colors.onAccent, over(colors.keyCapOnAccent, accent));
    });
    colors.accentSymbol =
        adjusted(highlight, isDark ? 0.01F : -0.01F, [&colors](const QColor& accent) {
            const auto visibleOn = [&accent](const QColor& surface) {
                const QColor tile = over(withOpacity(accent, 0.1F), surface);
                return contrastRatio(accent, surface) >= symbolAccentContrast &&
                       contrastRatio(accent, tile) >= symbolContrast;
            };
            return visibleOn(colors.panel) && visibleOn(colors.window) && visibleOn(colors.group);
        });

    const auto isToldFromRow = [&colors](const QColor& banner) {
        return contrastRatio(banner, colors.accent) >= bannerContrast;
    };
    colors.bannerInformation = adjusted(colors.accent, -0.01F, isToldFromRow);
    if (!isToldFromRow(colors.bannerInformation)) {
        // It is next to black.
        colors.bannerInformation = adjusted(colors.accent, 0.01F, isToldFromRow);
    }
    colors.switchThumb = Qt::white;
    colors.switchOn = adjusted(colors.accent, 0.01F, [&colors](const QColor& on) {
        return contrastRatio(on, colors.group) >= symbolContrast;
    });
    colors.tile = withOpacity(colors.accentSymbol, 0.1F);
    colors.chip = withOpacity(colors.secondaryText, 0.1F);
    colors.keyCap = withOpacity(colors.secondaryText, 0.12F);
    colors.hintCap = withOpacity(colors.text, 0.1F);
    colors.buttonHover = withOpacity(colors.text, 0.08F);
    colors.scrollThumb = withOpacity(colors.text, 0.3F);
    colors.focus = adjusted(highlight, isDark ? 0.01F : -0.01F, [&colors](const QColor& ring) {
        const auto surfaces = {
            colors.panel, colors.window, colors.group, colors.popup,
            over(colors.chip, colors.window)};
        return std::ranges::all_of(surfaces, [&ring](const QColor& surface) {
            return contrastRatio(ring, surface) >= symbolContrast;
        });
    });
    colors.accentText =
        adjusted(highlight, isDark ? 0.01F : -0.01F, [&colors](const QColor& accent) {
            return contrastRatio(accent, colors.window) >= textContrast &&
                   contrastRatio(accent, over(colors.chip, colors.window)) >= textContrast;
        });
    return colors;
}

Tokens::Tokens(QObject* parent)
    : QObject(parent)
    , m_color(tokenColors(QGuiApplication::palette()))
{
    qApp->installEventFilter(this);
}

QString Tokens::fixedFamily() const
{
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

QString Tokens::keys(const QString& label) const
{
    return drawableKeys(label);
}

bool Tokens::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp) {
        m_color = tokenColors(QGuiApplication::palette());
        Q_EMIT colorChanged();
    }
    return false;
}

} // namespace tessly
