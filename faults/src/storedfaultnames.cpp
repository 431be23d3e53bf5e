#include "storedfaultnames.h"

#include <QSet>

#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>

namespace fault {

QString numberedFaultName(const QString& name, int k)
{
    const QString part = ZNFileName::fileNamePart(name);
    const int dot = part.lastIndexOf(QLatin1Char('.'));
    const int at = dot < 0 ? name.size() : name.size() - part.size() + dot;
    QString numbered = name;
    return numbered.insert(at, QStringLiteral(" (%1)").arg(k));
}

std::vector<RenamedFault> makeStoredNamesUnique(QStringList& names)
{
    QHash<QString, int> firstOf;  // stored form -> first index holding it
    QSet<QString> taken;          // every stored form, so that a new one meets none
    for (int i = 0; i < names.size(); ++i) {
        const QString stored = ZNFileName::completeBaseName(names[i]);
        taken.insert(stored);
        if (!firstOf.contains(stored)) firstOf.insert(stored, i);
    }
    std::vector<RenamedFault> renamed;
    for (int i = 0; i < names.size(); ++i) {
        const QString stored = ZNFileName::completeBaseName(names[i]);
        const int first = firstOf.value(stored);
        if (first == i) continue;
        RenamedFault r;
        r.index = i;
        r.from = names[i];
        r.firstName = names[first];
        for (int k = 2;; ++k) {
            r.to = numberedFaultName(names[i], k);
            r.storedAs = ZNFileName::completeBaseName(r.to);
            if (!taken.contains(r.storedAs)) break;
        }
        taken.insert(r.storedAs);
        names[i] = r.to;
        renamed.push_back(r);
    }
    return renamed;
}

std::vector<RenamedFault> makeStoredFaultNamesUnique(ZNFaultPatchManager& set)
{
    const QList<ZN3DFaultPatchLight*>& lights = set.getFaultLightList();
    QStringList names;
    for (const ZN3DFaultPatchLight* light : lights) names << light->GetFaultName();
    const std::vector<RenamedFault> renamed = makeStoredNamesUnique(names);
    for (const RenamedFault& r : renamed) lights[r.index]->SetFaultName(r.to);
    return renamed;
}

} // namespace fault
