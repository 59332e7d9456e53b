#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// The question of the alert's window, as its QML sees it.
class ConfirmationContent final : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window.")
    Q_PROPERTY(QString message MEMBER message NOTIFY changed)
    Q_PROPERTY(QString confirmTitle MEMBER confirmTitle NOTIFY changed)
    Q_PROPERTY(QString cancelTitle MEMBER cancelTitle NOTIFY changed)

public:
    /// Always with an argument: QML makes none.
    explicit ConfirmationContent(QObject* parent)
        : QObject(parent)
    {
    }

    QString message;
    QString confirmTitle;
    QString cancelTitle;

Q_SIGNALS:
    void changed();
    void answered(bool confirmed);
};

} // namespace tessly
