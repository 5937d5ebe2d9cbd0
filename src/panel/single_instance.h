#pragma once
// One panel per user session, on the session bus: the first process owns the name
// "com.nuvrel.Panel" and serves Toggle() and a Visible property at "/com/nuvrel/Panel"; a
// later start (or `nuvrel-panel --toggle`) calls Toggle on it and ends, so that a shortcut
// set in the desktop's own settings works.
//
// Threading: the GUI thread; calls arrive through its event loop.

#include <QObject>
#include <functional>

namespace nuvrel::panel {

class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.nuvrel.Panel")
    Q_PROPERTY(bool Visible READ visible)

public:
    static constexpr const char* serviceName = "com.nuvrel.Panel";
    static constexpr const char* objectPath = "/com/nuvrel/Panel";

    enum class Role {
        primary,    // this process owns the name and serves the calls
        forwarded,  // another process owns it and was told to toggle
        noBus,      // no session bus: this process runs on its own
    };

    SingleInstance(std::function<void()> onToggle, std::function<bool()> isVisible)
        : onToggle_(std::move(onToggle)), isVisible_(std::move(isVisible)) {}

    // Takes the name, or tells its owner to toggle.
    Role claim();

    bool visible() const { return isVisible_ && isVisible_(); }

public Q_SLOTS:
    void Toggle();

private:
    std::function<void()> onToggle_;
    std::function<bool()> isVisible_;
};

}  // namespace nuvrel::panel
