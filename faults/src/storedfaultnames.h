#pragma once
#include <vector>

#include <QString>
#include <QStringList>

class ZNFaultPatchManager;

// A fault set file stores each fault's name as its complete base name as a file name
// (ZNFileName::completeBaseName: "F.1" is stored "F", "North/South" is stored "South"),
// kept for file compatibility. Two distinct faults may therefore come back under one
// name, and a stick file written from them would join them into one fault. These
// functions rename the later of such faults so that every stored name is distinct.
namespace fault {

// One fault renamed by makeStoredNamesUnique.
struct RenamedFault {
    int index = 0;         // in the list given
    QString from;          // the name it had
    QString to;            // the name it has now
    QString storedAs;      // the stored form of `to`
    QString firstName;     // the earlier fault whose stored name it had
};

// The unique form of `name` with number `k`: " (k)" inserted where the stored form
// ends, before the extension it drops ("F.2", 2 -> "F (2).2", stored "F (2)").
QString numberedFaultName(const QString& name, int k);

// Makes the stored forms of `names` distinct: the first name of each stored form keeps
// it, each later one becomes numberedFaultName(name, k) with the smallest k >= 2 whose
// stored form no other name has. Returns the renamed entries in list order (none when
// the stored forms were distinct already).
std::vector<RenamedFault> makeStoredNamesUnique(QStringList& names);

// The same over the fault descriptors of `set`, in list order; the indices returned are
// positions in the descriptor list.
std::vector<RenamedFault> makeStoredFaultNamesUnique(ZNFaultPatchManager& set);

} // namespace fault
