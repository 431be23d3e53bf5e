#pragma once
#include <QString>

// The base of every persistent object of the framework. Objects are registered with the
// process services by pointer and recognised by their type name.
class ZNObject {
public:
    virtual ~ZNObject() = default;

    // The object's type name as written in its file header ("ZNFaultPatchManager", ...).
    virtual QString getZNObjectType() const = 0;
};
