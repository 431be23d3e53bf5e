#include "znfaultpatchtools.h"

#include <znsettings.h>

QString ZNFaultPatchTools::getAutoSaveFileNameTime() { return QStringLiteral("EmergencySave_Time"); }

QString ZNFaultPatchTools::getAutoSaveFileNameDepth() { return QStringLiteral("EmergencySave_Depth"); }

int ZNFaultPatchTools::getNbPatchBeforeAutoSave()
{
    bool ok = false;
    const int step = ZNSettings::value(QStringLiteral("FaultPicking"), QStringLiteral("AutoSaveStep"),
                                       kDefaultAutoSaveStep)
                         .toInt(&ok);
    return ok ? step : kDefaultAutoSaveStep;
}
