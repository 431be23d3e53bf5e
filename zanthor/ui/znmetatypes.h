#pragma once
// The value types that travel in the signals of the framework's widgets (also between
// threads), declared to Qt's meta-type system once for every widget.
#include <QMetaType>

#include <core/vec3.h>

Q_DECLARE_METATYPE(core::vec3)
