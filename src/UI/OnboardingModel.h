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

public:
    /// `model` must outlive this. `complete` is called at the end of `enable`, from inside it.
    OnboardingModel(AppModel& model, std::function<void()> complete, QObject* parent = nullptr);
    ~OnboardingModel() override;

    [[nodiscard]] QVariantList rows() const;

    /// Remembers that onboarding is done, asks for what automatic paste needs, and starts
    /// recording. Works once.
    Q_INVOKABLE void enable();

private:
    AppModel& m_model;
    std::function<void()> m_complete;
    bool m_isEnabled = false;
};

} // namespace tessly
