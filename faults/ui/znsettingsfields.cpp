#include "znsettingsfields.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>
#include <QStringList>

namespace settingsfields {

QSpinBox* intField(QWidget* parent, const char* name, const IntRange& r, const QString& tip)
{
    auto* box = new QSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(r.minimum, r.maximum);
    box->setSingleStep(r.step);
    box->setToolTip(tip);
    return box;
}

QDoubleSpinBox* realField(QWidget* parent, const char* name, const RealRange& r, const QString& tip)
{
    auto* box = new QDoubleSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(r.minimum, r.maximum);
    box->setSingleStep(r.step);
    box->setDecimals(r.decimals);
    box->setToolTip(tip);
    return box;
}

QComboBox* volumeField(QWidget* parent, const QStringList& volumes, const QString& tip)
{
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("volume"));
    box->addItems(volumes);
    box->setToolTip(tip);
    return box;
}

QDialogButtonBox* dialogButtons(QDialog* dialog, const std::function<void()>& restoreDefaults)
{
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                             QDialogButtonBox::RestoreDefaults, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    QObject::connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, dialog,
                     restoreDefaults);
    return buttons;
}

} // namespace settingsfields
