#pragma once
#include <QString>

// The host's event bus: user-visible messages, each with a kind. Library code calls the
// static `sendMessage`; the installed bus decides where messages go. The default bus
// writes errors (kinds 1 and 2) to the standard error stream and drops the rest, so a
// program without a GUI still shows what went wrong. The library never writes to stdout.
class ZNEventBus {
public:
    enum Kind {
        Information = 0,  // for the log
        Error = 1,        // an error shown to the user
        FileError = 2,    // a file could not be opened, read or written
        Progress = 3,     // progress of a long operation
        Detail = 4,       // fine-grained progress information
    };

    virtual ~ZNEventBus() = default;

    static void sendMessage(int kind, const QString& text);

    // The last error (kind 1 or 2) sent from the calling thread, whatever bus was
    // installed; empty when none was sent since the thread started or last cleared it.
    // Lets the code that started an operation say why it failed in one line.
    static QString lastErrorOfThisThread();
    static void clearLastErrorOfThisThread();

    // Installs `bus` (null restores the default) and returns the previous one; not owned.
    static ZNEventBus* install(ZNEventBus* bus);
    static ZNEventBus& instance();

protected:
    // Receives every message sent while this bus is installed.
    virtual void message(int kind, const QString& text);
};
