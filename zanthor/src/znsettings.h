#pragma once
#include <QString>
#include <QVariant>

// The user's settings store: one INI file, "settings.ini", in the user settings
// directory, read through Qt's QSettings. The directory is $KORVALITH_SETTINGS_DIR when
// that variable is set and not empty (tests and scripted runs use it to stay hermetic),
// otherwise the platform's per-user configuration folder followed by "korvalith".
// Other files of the user's settings (viewer defaults, ...) live in the same directory.
class ZNSettings {
public:
    static QString userSettingsDirectory();
    // Path of a file of the user settings directory.
    static QString userSettingsFile(const QString& fileName);

    // The value of `key` in `group`, or `defaultValue` when it is not set.
    static QVariant value(const QString& group, const QString& key,
                          const QVariant& defaultValue = QVariant());
    // Stores a value; false when the settings file could not be written.
    static bool setValue(const QString& group, const QString& key, const QVariant& value);

    // The 3D viewer's default parameters, an XML file of key-value elements.
    static QString viewer3dParametersFileName() { return QStringLiteral("default3dviewerparameters.xml"); }
    // The text of the first key-value element `key` (at any depth) of the XML file
    // `fileName` of the user settings directory. False, `value` untouched, when the file
    // is missing, unreadable, larger than a settings file can be, not XML, or has no
    // such element with a "value" attribute.
    static bool xmlFileValue(const QString& fileName, const QString& key, QString& value);
};
