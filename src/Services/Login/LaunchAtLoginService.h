#pragma once

#include "Bundle.h"
#include "LoginItem.h"
#include "UserDefaults.h"

#include <QString>

#include <exception>

namespace tessly {

/// Starts the program at login, and keeps that working across updates: a registration made by an
/// older build is made anew. Only the installed copy may be registered. Main thread only.
class LaunchAtLoginService
{
public:
    class RegistrationError final : public std::exception
    {
    public:
        enum class Case {
            /// The running copy is not the installed one.
            requiresInstalledApp,
        };

        explicit RegistrationError(Case errorCase)
            : m_case(errorCase)
        {
        }

        [[nodiscard]] Case errorCase() const { return m_case; }
        /// A sentence for the user.
        [[nodiscard]] QString description() const;
        [[nodiscard]] const char* what() const noexcept override;
        bool operator==(const RegistrationError& other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    /// Where the installed copy is.
    static const QString installedBundlePath;

    /// All of it must outlive the service.
    struct Dependencies
    {
        LoginItem& service;
        const Bundle& bundle;
        UserDefaults& defaults;
    };

    explicit LaunchAtLoginService(Dependencies dependencies);

    /// Whether the running copy is the installed one and starts at login.
    [[nodiscard]] bool isEnabled() const;

    /// Throws RegistrationError when a copy that is not installed is to be enabled, and what the
    /// login item throws.
    void setEnabled(bool enabled);

    /// Registers the login item again if another build registered it. Never turns it on. Throws
    /// what the login item throws; it may be unregistered then.
    void repairRegistrationIfNeeded();

private:
    [[nodiscard]] bool isInstalled() const;
    /// What tells one build in one place from another.
    [[nodiscard]] QString registrationIdentity() const;
    void registerItem();

    Dependencies m_dependencies;
};

} // namespace tessly
