// The studio's fault cleaning assistant: the search for pairs in the background, then
// the assistant's window.
#include "studiowindow.h"

#include <memory>

#include <zneventbus.h>
#include <znfaultpatchmanager.h>

#include "faultcleaningpairs.h"
#include "faultcleaningwindow.h"
#include "faultsetdocument.h"

void StudioWindow::cleanDuplicatedFaults(FaultSetDocument* document)
{
    if (!document) document = targetDocument();
    if (!document) {
        reportFailure(tr("Choose a fault set to clean first (open one, or select it in the tree)"));
        return;
    }
    if (m_cleaning) delete m_cleaning.data();  // one assistant at a time
    // The worker searches a copy: the user may go on editing meanwhile, and the pairs
    // found name faults by their ids, which the assistant checks again when it uses them.
    auto copy = std::make_shared<ZNFaultPatchManager>(*document->faultSet());
    auto found = std::make_shared<FaultCleaningPairs>();
    const core::Array<core::Duplet> candidates = document->mergeCandidates();
    const core::Array<double> costs = document->mergeCandidateCosts();
    QPointer<FaultSetDocument> target(document);
    const QString name = document->name();
    runTask(tr("Find duplicated faults in %1").arg(name),
            [copy, candidates, costs, found] { *found = findCleaningPairs(*copy, candidates, costs, -1); },
            [this, target, found, name] {
                if (!target) return false;  // closed meanwhile
                if (found->cancelled) {
                    ZNEventBus::sendMessage(ZNEventBus::Information, tr("Search for duplicated faults cancelled"));
                    return false;
                }
                if (found->pairs.empty()) {
                    ZNEventBus::sendMessage(ZNEventBus::Information, tr("No duplicated faults in %1").arg(name));
                    return true;
                }
                if (m_cleaning) delete m_cleaning.data();
                m_cleaning = new FaultCleaningWindow(this, target, std::move(*found), this);
                connect(m_cleaning, &FaultCleaningWindow::closed, m_cleaning, &QObject::deleteLater);
                return true;
            });
}

FaultCleaningWindow* StudioWindow::cleaningWindow() const
{
    return m_cleaning;
}
