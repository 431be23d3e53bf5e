#include "znsettings.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>

namespace {
const char* const kDirectoryVariable = "KORVALITH_SETTINGS_DIR";
const char* const kSettingsFileName = "settings.ini";
constexpr qint64 kLargestXmlSettingsFile = 16 * 1024 * 1024;  // bytes
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

bool ZNSettings::xmlFileValue(const QString& fileName, const QString& key, QString& value)
{
    QFile file(userSettingsFile(fileName));
    if (!file.open(QIODevice::ReadOnly) || file.size() > kLargestXmlSettingsFile) return false;
    QDomDocument doc;
    if (!doc.setContent(&file)) return false;
    const QDomElement e = doc.elementsByTagName(key).item(0).toElement();
    const QString attribute = QStringLiteral("value");
    if (e.isNull() || !e.hasAttribute(attribute)) return false;
    value = e.attribute(attribute);
    return true;
}
