#pragma once

#include "StatusItem.h"

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// One line of the status menu, as its QML sees it.
struct StatusMenuLine
{
    Q_GADGET
    QML_VALUE_TYPE(statusMenuLine)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString action MEMBER action CONSTANT)
    Q_PROPERTY(bool isEnabled MEMBER isEnabled CONSTANT)
    Q_PROPERTY(bool isSeparator MEMBER isSeparator CONSTANT)
    /// A key-cap label: "⌘Q"; may be empty.
    Q_PROPERTY(QString keys MEMBER keys CONSTANT)

public:
    QString title;
    QString action;
    bool isEnabled = true;
    bool isSeparator = false;
    QString keys;
};

/// What is in the status menu, and which line is lit.
class StatusMenuContent final : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window.")
    /// StatusMenuLine, from top to bottom.
    Q_PROPERTY(QVariantList lines READ lines NOTIFY linesChanged)
    /// Of `lines`; -1 if none is lit.
    Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged)

public:
    /// Always with an argument: QML makes none.
    explicit StatusMenuContent(QObject* parent)
        : QObject(parent)
    {
    }

    /// No line is lit.
    void setItems(std::vector<StatusMenuItem> items);
    [[nodiscard]] QVariantList lines() const;
    [[nodiscard]] int current() const { return m_current; }
    /// A line that cannot be chosen is not lit; nor is one that does not exist.
    void setCurrent(int line);
    /// Arrows move, Return chooses, Escape ends, and the lines' own keys choose them. False if the
    /// key means nothing here.
    bool press(int key, Qt::KeyboardModifiers modifiers);
    Q_INVOKABLE void choose(int line);

Q_SIGNALS:
    void linesChanged();
    void currentChanged();
    void chosen(const QString& action);
    /// Without a choice.
    void dismissed();

private:
    [[nodiscard]] bool canBeChosen(int line) const;
    /// Lights the next line that can be chosen, round and round.
    void move(int step);

    std::vector<StatusMenuItem> m_items;
    int m_current = -1;
};

} // namespace tessly
