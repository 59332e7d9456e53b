#pragma once

#include "AppModel.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QVariantList>

#include <functional>

namespace tessly {

/// One thing to know before the history begins.
struct PermissionRow
{
    Q_GADGET
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString detail MEMBER detail CONSTANT)
    Q_PROPERTY(QString note MEMBER note CONSTANT)

public:
    QString symbol;
    QString title;
    QString detail;
    /// What it comes to on this desktop; empty if that is not known.
    QString note;
};

/// What holds on this desktop, in sentences for the user.
struct OnboardingDesktop
{
    QString recording = {};
    QString pasting = {};
    QString storage = {};
    /// Whether there is a tray, from which the panel can be opened. Taken for granted until it is
    /// known.
    bool hasTray = true;

    bool operator==(const OnboardingDesktop&) const = default;
};

/// What the welcome window shows, and what its button does. Main thread only.
class OnboardingModel final : public QObject
{
    Q_OBJECT
    /// PermissionRow, from top to bottom.
    Q_PROPERTY(QVariantList rows READ rows NOTIFY desktopChanged)
    /// How the panel is opened on this desktop.
    Q_PROPERTY(QString hint READ hint NOTIFY desktopChanged)
    /// The command that the hint names; empty if none.
    Q_PROPERTY(QString command READ command NOTIFY desktopChanged)

public:
    /// `model` must outlive this. `complete` is called at the end of `enable`, from inside it.
    OnboardingModel(AppModel& model, std::function<void()> complete, QObject* parent = nullptr);
    ~OnboardingModel() override;

    [[nodiscard]] QVariantList rows() const;
    [[nodiscard]] QString hint() const;
    [[nodiscard]] QString command() const;
    void setDesktop(const OnboardingDesktop& desktop);

    /// Remembers that onboarding is done, asks for what automatic paste needs, and starts
    /// recording. Works once.
    Q_INVOKABLE void enable();
    /// Puts the command on the clipboard.
    Q_INVOKABLE void copyCommand();

Q_SIGNALS:
    void desktopChanged();

private:
    static QCoro::Task<> copy(QPointer<OnboardingModel> self);

    AppModel& m_model;
    std::function<void()> m_complete;
    OnboardingDesktop m_desktop;
    bool m_isEnabled = false;
};

} // namespace tessly
