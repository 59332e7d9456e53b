#pragma once

#include "FakeKeyEventPoster.h"
#include "FakeWorkspace.h"

#include <algorithm>
#include <map>
#include <memory>

namespace tessly::test {

/// A desktop in memory, as the contracts of Workspace and KeyEventPoster ask for it.
class FakeApplications
{
public:
    Workspace& workspace() { return m_workspace; }

    void show(const QString& id)
    {
        m_applications[id] = std::make_shared<FakeRunningApplication>(id, id);
        m_applications[id]->becomeActiveAfter(1);
        bringToFront(id);
    }
    void bringToFront(const QString& id) { m_workspace.setFrontmost(m_applications.at(id)); }
    void close(const QString& id) { m_applications.at(id)->terminate(); }
    KeyEventPoster& poster() { return *m_poster; }
    void endPoster()
    {
        m_pastesBefore = m_poster->pastes();
        m_poster.reset();
    }
    int pastesSeenBy(const QString& id)
    {
        const auto& pastes = m_poster ? m_poster->pastes() : m_pastesBefore;
        return static_cast<int>(std::ranges::count(pastes, m_applications.at(id)));
    }
    void holdKeys() { m_poster->gate().hold(); }
    void letKeysGo()
    {
        if (m_poster) {
            m_poster->gate().open();
        }
    }
    void replaceContent() { m_poster->replaceContent(); }

private:
    FakeWorkspace m_workspace;
    std::map<QString, std::shared_ptr<FakeRunningApplication>> m_applications;
    std::unique_ptr<FakeKeyEventPoster> m_poster = std::make_unique<FakeKeyEventPoster>();
    std::vector<std::shared_ptr<RunningApplication>> m_pastesBefore;
};

} // namespace tessly::test
