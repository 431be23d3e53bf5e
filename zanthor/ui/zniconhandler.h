#pragma once
#include <QIcon>
#include <QString>

// The host's icons by name ("faultpicking", ...): a host service, filled by the libraries
// that draw their icons and by the host itself, which may replace any of them. Used on
// the GUI thread only.
class ZNIconHandler {
public:
    // The icon registered under `name`; a null icon for an unknown name.
    static QIcon icon(const QString& name);
    static bool hasIcon(const QString& name);
    // Registers `icon` under `name`, replacing the one there.
    static void setIcon(const QString& name, const QIcon& icon);
    // Registers `icon` under `name` unless an icon is there already (a library's own
    // icon never replaces the host's); true when it was registered.
    static bool setDefaultIcon(const QString& name, const QIcon& icon);
};
