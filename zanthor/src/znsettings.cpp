#include "znsettings.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace {
const char* const kDirectoryVariable = "KORVALITH_SETTINGS_DIR";
const char* const kSettingsFileName = "settings.ini";
} // namespace

QString ZNSettings::userSettingsDirectory()
{
    const QString overridden = qEnvironmentVariable(kDirectoryVariable);
    if (!overridden.isEmpty()) return QDir::cleanPath(overridden);
    return QDir::cleanPath(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
        QStringLiteral("/korvalith"));
}

QString ZNSettings::userSettingsFile(const QString& fileName)
{
    return userSettingsDirectory() + QLatin1Char('/') + fileName;
}

QVariant ZNSettings::value(const QString& group, const QString& key, const QVariant& defaultValue)
{
    QSettings settings(userSettingsFile(kSettingsFileName), QSettings::IniFormat);
    settings.beginGroup(group);
    return settings.value(key, defaultValue);
}

bool ZNSettings::setValue(const QString& group, const QString& key, const QVariant& value)
{
    QDir().mkpath(userSettingsDirectory());
    QSettings settings(userSettingsFile(kSettingsFileName), QSettings::IniFormat);
    settings.beginGroup(group);
    settings.setValue(key, value);
    settings.endGroup();
    settings.sync();
    return settings.status() == QSettings::NoError;
}
