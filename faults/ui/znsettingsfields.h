#pragma once
#include <functional>

#include <QString>

class QComboBox;
class QDialog;
class QDialogButtonBox;
class QDoubleSpinBox;
class QSpinBox;
class QStringList;
class QWidget;

// The pieces the settings dialogs are made of, so that each field of every dialog reads
// and behaves alike: a named spin box with its range and its explanation as tooltip, the
// volume chooser, and the Ok / Cancel / Restore Defaults buttons.
namespace settingsfields {

struct IntRange {
    int minimum, maximum, step;
};
struct RealRange {
    double minimum, maximum, step;
    int decimals;
};

QSpinBox* intField(QWidget* parent, const char* name, const IntRange& range, const QString& tip);
QDoubleSpinBox* realField(QWidget* parent, const char* name, const RealRange& range, const QString& tip);
// A chooser of `volumes` named "volume".
QComboBox* volumeField(QWidget* parent, const QStringList& volumes, const QString& tip);
// Ok and Cancel (accepting and rejecting `dialog`) and Restore Defaults, which calls
// `restoreDefaults`.
QDialogButtonBox* dialogButtons(QDialog* dialog, const std::function<void()>& restoreDefaults);

} // namespace settingsfields
