#pragma once

namespace tessly {

/// The desktop's record that the program is to start when the user logs in. Main thread only.
class LoginItem
{
public:
    enum class Status {
        notRegistered,
        enabled,
        /// Registered, but switched off by the user in the desktop's own settings.
        requiresApproval,
        /// There is something in the record's place that the desktop cannot make sense of.
        notFound,
    };

    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    [[nodiscard]] virtual Status status() const = 0;

    // Both throw a std::exception whose what() is a sentence for the user (UTF-8), with the record
    // as it was.

    /// Makes the record anew, enabled.
    virtual void registerItem() = 0;
    /// Removes the record; done already if there is none.
    virtual void unregisterItem() = 0;
};

} // namespace tessly
