#pragma once
#include <QString>

// The host's message boxes: a message the user must acknowledge, with a title and a
// text that may hold simple rich text ("<br>" line breaks). Library code calls the static
// `showMessage` (or `warning`); the installed implementation decides how it is shown.
//
// A GUI host installs an implementation that opens a modal box. The default one never
// blocks: it sends the title and the text (line breaks made plain) on the event bus as
// an error (kind 1), so a program without a GUI logs the message and carries on.
class ZNMessageBox {
public:
    enum Icon {
        Information = 0,
        Warning = 1,
        Critical = 2,
    };

    virtual ~ZNMessageBox() = default;

    // Shows a message and returns once the user acknowledged it (at once by default).
    static void showMessage(Icon icon, const QString& title, const QString& text);
    static void warning(const QString& title, const QString& text)
    {
        showMessage(Warning, title, text);
    }

    // Installs `box` (null restores the default) and returns the previous one; not owned.
    static ZNMessageBox* install(ZNMessageBox* box);
    static ZNMessageBox& instance();

    // The text without its rich-text line breaks: each "<br>" becomes a newline.
    static QString plainText(const QString& text);

protected:
    // Receives every message shown while this implementation is installed.
    virtual void show(Icon icon, const QString& title, const QString& text);
};
