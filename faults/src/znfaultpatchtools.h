#pragma once
#include <QString>

// Names and settings shared by the fault picking tools.
class ZNFaultPatchTools {
public:
    // Auto-save step when the user's settings hold none (or no integer).
    static constexpr int kDefaultAutoSaveStep = 10;

    // File name of the emergency save of time patches: "EmergencySave_Time".
    static QString getAutoSaveFileNameTime();
    // File name of the emergency save of depth patches: "EmergencySave_Depth".
    static QString getAutoSaveFileNameDepth();
    // The auto-save step: the integer of key "AutoSaveStep" in group "FaultPicking" of
    // the user's settings, read on every call; kDefaultAutoSaveStep when it is missing or
    // not an integer. Zero and negative values are returned as they are.
    static int getNbPatchBeforeAutoSave();
};
