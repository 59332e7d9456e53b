#pragma once

#include <QColor>
#include <QObject>
#include <QPalette>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// Every colour that a view uses. Those with an opacity are meant to lie over what their name says.
struct TokenColors
{
    Q_GADGET
    QML_VALUE_TYPE(tokenColors)
    Q_PROPERTY(QColor panel MEMBER panel CONSTANT)
    Q_PROPERTY(QColor border MEMBER border CONSTANT)
    Q_PROPERTY(QColor shadowedBorder MEMBER shadowedBorder CONSTANT)
    Q_PROPERTY(QColor divider MEMBER divider CONSTANT)
    Q_PROPERTY(QColor text MEMBER text CONSTANT)
    Q_PROPERTY(QColor secondaryText MEMBER secondaryText CONSTANT)
    Q_PROPERTY(QColor accent MEMBER accent CONSTANT)
    Q_PROPERTY(QColor onAccent MEMBER onAccent CONSTANT)
    Q_PROPERTY(QColor onAccentSecondary MEMBER onAccentSecondary CONSTANT)
    Q_PROPERTY(QColor accentSymbol MEMBER accentSymbol CONSTANT)
    Q_PROPERTY(QColor tile MEMBER tile CONSTANT)
    Q_PROPERTY(QColor tileOnAccent MEMBER tileOnAccent CONSTANT)
    Q_PROPERTY(QColor chip MEMBER chip CONSTANT)
    Q_PROPERTY(QColor keyCap MEMBER keyCap CONSTANT)
    Q_PROPERTY(QColor keyCapOnAccent MEMBER keyCapOnAccent CONSTANT)
    Q_PROPERTY(QColor hintCap MEMBER hintCap CONSTANT)
    Q_PROPERTY(QColor pin MEMBER pin CONSTANT)
    Q_PROPERTY(QColor buttonHover MEMBER buttonHover CONSTANT)
    Q_PROPERTY(QColor scrollThumb MEMBER scrollThumb CONSTANT)
    Q_PROPERTY(QColor bannerInformation MEMBER bannerInformation CONSTANT)
    Q_PROPERTY(QColor bannerWarning MEMBER bannerWarning CONSTANT)
    Q_PROPERTY(QColor bannerError MEMBER bannerError CONSTANT)
    Q_PROPERTY(QColor onBanner MEMBER onBanner CONSTANT)
    Q_PROPERTY(QColor shadow MEMBER shadow CONSTANT)
    Q_PROPERTY(QColor cardShadow MEMBER cardShadow CONSTANT)
    Q_PROPERTY(QColor popup MEMBER popup CONSTANT)
    Q_PROPERTY(QColor destructive MEMBER destructive CONSTANT)
    Q_PROPERTY(QColor window MEMBER window CONSTANT)
    Q_PROPERTY(QColor group MEMBER group CONSTANT)
    Q_PROPERTY(QColor tertiaryText MEMBER tertiaryText CONSTANT)
    Q_PROPERTY(QColor button MEMBER button CONSTANT)
    Q_PROPERTY(QColor buttonBorder MEMBER buttonBorder CONSTANT)
    Q_PROPERTY(QColor switchOff MEMBER switchOff CONSTANT)
    Q_PROPERTY(QColor switchOffBorder MEMBER switchOffBorder CONSTANT)
    Q_PROPERTY(QColor switchOn MEMBER switchOn CONSTANT)
    Q_PROPERTY(QColor switchThumb MEMBER switchThumb CONSTANT)
    Q_PROPERTY(QColor focus MEMBER focus CONSTANT)
    Q_PROPERTY(QColor accentText MEMBER accentText CONSTANT)
    Q_PROPERTY(QColor good MEMBER good CONSTANT)
    Q_PROPERTY(QColor attention MEMBER attention CONSTANT)
    Q_PROPERTY(QColor scrim MEMBER scrim CONSTANT)

public:
    QColor panel;
    /// Around what is shown over other programs' windows: opaque, since without a compositing
    /// manager black would show through.
    QColor border;
    /// The same where there is a shadow.
    QColor shadowedBorder;
    QColor divider;
    QColor text;
    QColor secondaryText;
    /// Under text in `onAccent`, `onAccentSecondary` and on `keyCapOnAccent`: the palette's accent,
    /// darkened where it is too light for white.
    QColor accent;
    QColor onAccent;
    QColor onAccentSecondary;
    /// The accent for symbols on `panel`, `window` and `group`.
    QColor accentSymbol;
    /// The accent for text on `window`, also under `chip`.
    QColor accentText;
    QColor tile;
    QColor tileOnAccent;
    QColor chip;
    QColor keyCap;
    QColor keyCapOnAccent;
    QColor hintCap;
    QColor pin;
    QColor buttonHover;
    QColor scrollThumb;
    /// The accent, told from that of a selected row under it.
    QColor bannerInformation;
    QColor bannerWarning;
    QColor bannerError;
    QColor onBanner;
    QColor shadow;
    /// Around a window of the program.
    QColor cardShadow;
    /// Menus, tool tips and alerts.
    QColor popup;
    /// Text on `popup` and `button`.
    QColor destructive;
    /// Behind the groups of a form.
    QColor window;
    QColor group;
    QColor tertiaryText;
    QColor button;
    QColor buttonBorder;
    QColor switchOff;
    QColor switchOffBorder;
    /// Brighter than `switchOff` where everything is dark.
    QColor switchOn;
    QColor switchThumb;
    /// Around the control that has the keyboard.
    QColor focus;
    /// Text on `group`: all is well, and something is to be done.
    QColor good;
    QColor attention;
    /// Over a window that waits for an answer.
    QColor scrim;
};

/// The colours under a desktop's palette: light or dark as its windows are, with its accent.
[[nodiscard]] TokenColors tokenColors(const QPalette& palette);

/// Every measure that a view uses, in device-independent pixels, and durations in milliseconds.
struct TokenMetrics
{
    Q_GADGET
    QML_VALUE_TYPE(tokenMetrics)
    Q_PROPERTY(int panelWidth MEMBER panelWidth CONSTANT)
    Q_PROPERTY(int panelHeight MEMBER panelHeight CONSTANT)
    Q_PROPERTY(int panelRadius MEMBER panelRadius CONSTANT)
    Q_PROPERTY(int panelPadding MEMBER panelPadding CONSTANT)
    Q_PROPERTY(int rowRadius MEMBER rowRadius CONSTANT)
    Q_PROPERTY(int tileRadius MEMBER tileRadius CONSTANT)
    Q_PROPERTY(int bannerRadius MEMBER bannerRadius CONSTANT)
    Q_PROPERTY(int shadowRadius MEMBER shadowRadius CONSTANT)
    Q_PROPERTY(int cardShadowReach MEMBER cardShadowReach CONSTANT)
    Q_PROPERTY(int cardShadowDrop MEMBER cardShadowDrop CONSTANT)
    Q_PROPERTY(int keyCapRadius MEMBER keyCapRadius CONSTANT)
    Q_PROPERTY(int hintCapRadius MEMBER hintCapRadius CONSTANT)
    Q_PROPERTY(int popupRadius MEMBER popupRadius CONSTANT)
    Q_PROPERTY(int headerSymbol MEMBER headerSymbol CONSTANT)
    Q_PROPERTY(int buttonSymbol MEMBER buttonSymbol CONSTANT)
    Q_PROPERTY(int rowSymbol MEMBER rowSymbol CONSTANT)
    Q_PROPERTY(int emptySymbol MEMBER emptySymbol CONSTANT)
    Q_PROPERTY(int searchText MEMBER searchText CONSTANT)
    Q_PROPERTY(int emptyText MEMBER emptyText CONSTANT)
    Q_PROPERTY(int rowText MEMBER rowText CONSTANT)
    Q_PROPERTY(int rowLine MEMBER rowLine CONSTANT)
    Q_PROPERTY(int callout MEMBER callout CONSTANT)
    Q_PROPERTY(int caption MEMBER caption CONSTANT)
    Q_PROPERTY(int captionLine MEMBER captionLine CONSTANT)
    Q_PROPERTY(int hintCapText MEMBER hintCapText CONSTANT)
    Q_PROPERTY(int settingsWidth MEMBER settingsWidth CONSTANT)
    Q_PROPERTY(int settingsHeight MEMBER settingsHeight CONSTANT)
    Q_PROPERTY(int onboardingWidth MEMBER onboardingWidth CONSTANT)
    Q_PROPERTY(int onboardingHeight MEMBER onboardingHeight CONSTANT)
    Q_PROPERTY(int alertWidth MEMBER alertWidth CONSTANT)
    Q_PROPERTY(int groupRadius MEMBER groupRadius CONSTANT)
    Q_PROPERTY(int buttonRadius MEMBER buttonRadius CONSTANT)
    Q_PROPERTY(int buttonHeight MEMBER buttonHeight CONSTANT)
    Q_PROPERTY(int largeButtonHeight MEMBER largeButtonHeight CONSTANT)
    Q_PROPERTY(int formRow MEMBER formRow CONSTANT)
    Q_PROPERTY(int formInset MEMBER formInset CONSTANT)
    Q_PROPERTY(int tabSymbol MEMBER tabSymbol CONSTANT)
    Q_PROPERTY(int permissionSymbol MEMBER permissionSymbol CONSTANT)
    Q_PROPERTY(int aboutSymbol MEMBER aboutSymbol CONSTANT)
    Q_PROPERTY(int onboardingSymbol MEMBER onboardingSymbol CONSTANT)
    Q_PROPERTY(int formText MEMBER formText CONSTANT)
    Q_PROPERTY(int headline MEMBER headline CONSTANT)
    Q_PROPERTY(int largeTitle MEMBER largeTitle CONSTANT)
    Q_PROPERTY(int onboardingTitle MEMBER onboardingTitle CONSTANT)
    Q_PROPERTY(int previewHeader MEMBER previewHeader CONSTANT)
    Q_PROPERTY(int previewPadding MEMBER previewPadding CONSTANT)
    Q_PROPERTY(int previewText MEMBER previewText CONSTANT)
    Q_PROPERTY(int appearance MEMBER appearance CONSTANT)
    Q_PROPERTY(int toolTipDelay MEMBER toolTipDelay CONSTANT)

public:
    int panelWidth = 660;
    int panelHeight = 560;
    int panelRadius = 12;
    int panelPadding = 18;
    int rowRadius = 11;
    int tileRadius = 9;
    int bannerRadius = 10;
    int shadowRadius = 3;
    /// Multiples of 4, as they are whole pixels at scales like 1.25 and 1.5.
    int cardShadowReach = 28;
    int cardShadowDrop = 8;
    int keyCapRadius = 6;
    int hintCapRadius = 4;
    int popupRadius = 8;
    int headerSymbol = 22;
    int buttonSymbol = 20;
    int rowSymbol = 18;
    int emptySymbol = 44;
    int searchText = 19;
    int emptyText = 17;
    int rowText = 14;
    /// The height of a line, the same for every script, so that all rows are of one height.
    int rowLine = 19;
    int callout = 12;
    int caption = 11;
    int captionLine = 15;
    int hintCapText = 10;
    int settingsWidth = 610;
    int settingsHeight = 440;
    int onboardingWidth = 650;
    int onboardingHeight = 510;
    int alertWidth = 280;
    int groupRadius = 10;
    int buttonRadius = 7;
    int buttonHeight = 26;
    int largeButtonHeight = 34;
    int formRow = 34;
    /// From the edge of a group to its texts and controls, and to its heading.
    int formInset = 12;
    int tabSymbol = 22;
    int permissionSymbol = 22;
    int aboutSymbol = 72;
    int onboardingSymbol = 66;
    int formText = 13;
    int headline = 14;
    int largeTitle = 26;
    int onboardingTitle = 27;
    int previewWidest = 420;
    int previewNarrowest = 240;
    int previewHeader = 62;
    int previewPadding = 16;
    int previewText = 13;
    /// How long things take to come and go.
    int appearance = 140;
    /// How long the pointer rests on something before its tool tip shows.
    int toolTipDelay = 600;
};

/// The design of everything that is seen, for QML: `Tokens.color.text`, `Tokens.size.rowRadius`.
/// The colours follow the desktop's palette while the program runs.
class Tokens final : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(tessly::TokenColors color READ color NOTIFY colorChanged)
    Q_PROPERTY(tessly::TokenMetrics size READ size CONSTANT)
    /// The desktop's font whose characters are all of one width.
    Q_PROPERTY(QString fixedFamily READ fixedFamily CONSTANT)

public:
    explicit Tokens(QObject* parent = nullptr);

    [[nodiscard]] const TokenColors& color() const { return m_color; }
    [[nodiscard]] TokenMetrics size() const { return {}; }
    [[nodiscard]] QString fixedFamily() const;

    /// A key-cap label as the fonts here can draw it.
    Q_INVOKABLE [[nodiscard]] QString keys(const QString& label) const;

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void colorChanged();

private:
    TokenColors m_color;
};

} // namespace tessly
