#pragma once

#include "AppModel.h"
#include "UserDefaults.h"

#include <QObject>
#include <QStringList>

namespace tessly {

/// Tells of histories that were found damaged and set aside, at every start until the user has
/// dismissed it: a rescue is news that must not get lost. Main thread only.
class RescueNotices final : public QObject
{
    Q_OBJECT

public:
    /// Tells of earlier rescues that the user has not seen yet. Both must outlive this.
    RescueNotices(UserDefaults& defaults, AppModel& model);
    ~RescueNotices() override;

    /// Tells the user and the log of the rescue in a folder of this name; what was told of it
    /// before is replaced. Neither may contain tabs or line ends.
    void tell(const QString& folder, const QString& message);

private:
    void dismissed(const QString& folder);
    void show(const QString& folder, const QString& message);
    void store();

    UserDefaults& m_defaults;
    AppModel& m_model;
    /// Folder and message, with a tab between, in the order of the rescues.
    QStringList m_unseen;
};

} // namespace tessly
