#pragma once

#include "AppModel.h"

#include <QObject>
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

public:
    QString symbol;
    QString title;
    QString detail;
};

/// What the welcome window shows, and what its button does. Main thread only.
class OnboardingModel final : public QObject
{
    Q_OBJECT
    /// PermissionRow, from top to bottom.
    Q_PROPERTY(QVariantList rows READ rows CONSTANT)
    /// What else there is to know on this desktop; empty if nothing.
    Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)

public:
    /// `model` must outlive this. `complete` is called at the end of `enable`, from inside it.
    OnboardingModel(AppModel& model, std::function<void()> complete, QObject* parent = nullptr);
    ~OnboardingModel() override;

    [[nodiscard]] QVariantList rows() const;
    [[nodiscard]] QString hint() const;
    /// Whether the desktop has a tray, from which the panel can be opened. Taken for granted until
    /// it is known.
    void setHasTray(bool hasTray);

    /// Remembers that onboarding is done, asks for what automatic paste needs, and starts
    /// recording. Works once.
    Q_INVOKABLE void enable();

Q_SIGNALS:
    void hintChanged();

private:
    AppModel& m_model;
    std::function<void()> m_complete;
    bool m_hasTray = true;
    bool m_isEnabled = false;
};

} // namespace tessly
