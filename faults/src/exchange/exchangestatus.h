#pragma once
#include <QString>

namespace fault::exchange {

// The outcome of reading or writing one exchange file. On failure `message` is one line
// a user can act on: "<file name>: line <n>: <problem>" for a bad line (n counts from 1),
// "<file name>: <problem>" otherwise, and the same text has been sent on the host's event
// bus as a file error (kind 2). Readers and writers leave their output untouched on
// failure.
struct ExchangeStatus {
    bool ok = true;
    int line = 0;     // 1-based number of the offending line; 0 when no line is at fault
    QString message;  // empty on success
    QString detail;   // the message without its file name: "line <n>: <problem>" or
                      // "<problem>", for callers that name the file as their user gave it

    static ExchangeStatus success() { return {}; }
    // Builds the failure and sends its message on the event bus.
    static ExchangeStatus failure(const QString& path, int line, const QString& problem);

    explicit operator bool() const { return ok; }
};

} // namespace fault::exchange
