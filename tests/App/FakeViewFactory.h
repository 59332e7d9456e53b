#pragma once

#include "ConfirmationView.h"
#include "FakePanelView.h"
#include "FakeWindowView.h"
#include "OnboardingModel.h"
#include "SettingsModel.h"
#include "StatusMenuView.h"
#include "StatusToolTipView.h"
#include "ViewPlugin.h"

#include <QStringList>

#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace tessly::test {

/// Windows that are only noted. The test plays the user.
class FakeViewFactory final : public ViewFactory
{
public:
    class Menu final : public StatusMenuView
    {
    public:
        void show(std::vector<StatusMenuItem> newItems, QPoint newPosition, Chosen chosen) override
        {
            items = std::move(newItems);
            position = newPosition;
            m_chosen = std::move(chosen);
        }
        void close() override { items.clear(); }
        /// The user chooses the line with this title.
        void choose(const QString& title)
        {
            for (const StatusMenuItem& item : std::exchange(items, {})) {
                if (item.title == title) {
                    m_chosen(item.action);
                }
            }
        }
        [[nodiscard]] QStringList titles() const
        {
            QStringList titles;
            for (const StatusMenuItem& item : items) {
                titles << (item.isSeparator ? QStringLiteral("-") : item.title);
            }
            return titles;
        }

        std::vector<StatusMenuItem> items;
        QPoint position;

    private:
        Chosen m_chosen;
    };

    class ToolTip final : public StatusToolTipView
    {
    public:
        void show(const QString& newText, const QRect& newIcon) override
        {
            text = newText;
            icon = newIcon;
        }
        void hide() override { text.clear(); }

        QString text;
        QRect icon;
    };

    class Confirmation final : public ConfirmationView
    {
    public:
        void
        ask(QString newMessage, QString confirmTitle, QString cancelTitle,
            Answered answered) override
        {
            message = std::move(newMessage);
            buttons = {std::move(confirmTitle), std::move(cancelTitle)};
            m_answered = std::move(answered);
        }
        [[nodiscard]] bool isAsking() const override { return m_answered != nullptr; }
        void answer(bool confirmed) { std::exchange(m_answered, nullptr)(confirmed); }

        QString message;
        QStringList buttons;

    private:
        Answered m_answered;
    };

    [[nodiscard]] std::unique_ptr<PanelView> makePanel(PanelModel&, PanelSurface) override
    {
        return note(panel);
    }
    [[nodiscard]] std::unique_ptr<WindowView> makeSettings(SettingsModel& model) override
    {
        settingsModel = &model;
        return noteWindow(settings);
    }
    [[nodiscard]] std::unique_ptr<WindowView> makeOnboarding(OnboardingModel& model) override
    {
        onboardingModel = &model;
        return noteWindow(onboarding);
    }
    [[nodiscard]] std::unique_ptr<StatusMenuView> makeStatusMenu() override { return note(menu); }
    [[nodiscard]] std::unique_ptr<StatusToolTipView> makeStatusToolTip() override
    {
        return note(toolTip);
    }
    [[nodiscard]] std::unique_ptr<ConfirmationView> makeConfirmation() override
    {
        return note(confirmation);
    }

    // What was made last, which its maker's caller owns.
    FakePanelView* panel = nullptr;
    FakeWindowView* settings = nullptr;
    SettingsModel* settingsModel = nullptr;
    FakeWindowView* onboarding = nullptr;
    OnboardingModel* onboardingModel = nullptr;
    Menu* menu = nullptr;
    ToolTip* toolTip = nullptr;
    Confirmation* confirmation = nullptr;

private:
    template <typename View>
    std::unique_ptr<View> note(View*& place)
    {
        auto view = std::make_unique<View>();
        place = view.get();
        return view;
    }
    std::unique_ptr<WindowView> noteWindow(FakeWindowView*& place)
    {
        auto view = std::make_unique<FakeWindowView>(m_windows.emplace_back());
        place = view.get();
        return view;
    }

    /// Of every window that was made.
    std::deque<FakeWindowView::Record> m_windows;
};

} // namespace tessly::test
