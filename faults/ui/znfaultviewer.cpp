#include "znfaultviewer.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include <znbackgroundtask.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>
#include <znpropertybrowser.h>
#include <znsectionviewer.h>

#include "znfaulteraser.h"
#include "znfaultpickingsession.h"
#include "znfaultviewertools.h"

namespace {
const QString kDataMappingGroup = QStringLiteral("Data Mapping");
constexpr int kPropertiesWidth = 260;  // pixels, the sheet beside the fault at first
} // namespace

ZNFaultViewer::ZNFaultViewer(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("faultViewer"));
    auto engine = std::make_unique<ZNFaultViewerEngine>();
    m_engine = engine.get();
    m_viewer = new ZNSectionViewer(std::move(engine));
    m_engine->setColourMap(img::ColourScale::Map::Seismic);
    m_engine->setViewerActionListener([this](const QString& action) { onAction(action); });
    m_engine->addDrawable(std::make_shared<ZNFaultViewerOverlay>(*m_engine));
    m_viewer->addTool(ZNFaultViewerEngine::gotoModeName(), std::make_unique<ZNFaultViewerGotoTool>(*m_engine));
    m_viewer->addTool(ZNFaultViewerEngine::faultPickingModeName(),
                      std::make_unique<ZNFaultViewerPickingTool>(*m_engine, [this] { refreshPickedPoints(); }));
    auto eraser = std::make_unique<ZNFaultEraser>();
    m_eraser = eraser.get();
    m_viewer->addTool(ZNFaultViewerEngine::eraseModeName(), std::move(eraser));

    m_properties = new ZNPropertyBrowser(this);
    m_properties->setObjectName(QStringLiteral("faultViewerProperties"));
    connect(m_properties, &ZNPropertyBrowser::propertyEdited, this, &ZNFaultViewer::onPropertyEdited);

    m_mappingButton = new QToolButton(this);
    m_mappingButton->setObjectName(QStringLiteral("dataMappingButton"));
    m_mappingButton->setText(tr("Data Mapping..."));
    m_mappingButton->setToolTip(tr("Map a volume along the fault"));
    connect(m_mappingButton, &QToolButton::clicked, this, &ZNFaultViewer::dataMappingRequested);
    m_map = new QComboBox(this);
    m_map->setObjectName(QStringLiteral("colourMap"));
    m_map->addItems(img::ColourScale::mapNames());
    m_map->setCurrentText(img::ColourScale::mapName(m_engine->colourScale().map()));
    connect(m_map, &QComboBox::currentTextChanged, this, [this](const QString& name) {
        img::ColourScale::Map map;
        if (img::ColourScale::mapFromName(name, map)) m_engine->setColourMap(map);
    });
    auto* fit = new QToolButton(this);
    fit->setText(tr("Fit"));
    connect(fit, &QToolButton::clicked, this, [this] { m_engine->fit(); });
    auto* sheet = new QToolButton(this);
    sheet->setText(tr("Properties"));
    sheet->setCheckable(true);
    sheet->setChecked(true);
    connect(sheet, &QToolButton::toggled, m_properties, &QWidget::setVisible);

    auto* controls = new QHBoxLayout;
    controls->addWidget(m_mappingButton);
    controls->addWidget(m_map);
    controls->addStretch(1);
    controls->addWidget(fit);
    controls->addWidget(sheet);
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(m_viewer);
    splitter->addWidget(m_properties);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({4 * kPropertiesWidth, kPropertiesWidth});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addLayout(controls);
    layout->addWidget(splitter, 1);
    // A click moves the goto point, and so does the reference point of a Ctrl+click.
    connect(m_viewer, &ZNSectionViewer::clicked, this, [this](const QPointF& viewport) {
        if (m_engine->isFaultProjected()) m_engine->updateGotoPoint(viewport);
    });
    connect(m_viewer, &ZNSectionViewer::referencePointPicked, this, &ZNFaultViewer::gotoPointChanged);
    m_viewer->setImageBackground(m_engine->backgroundColour());
    refreshProperties();
}

ZNFaultViewer::~ZNFaultViewer()
{
    m_engine->setViewerActionListener(nullptr);
    m_engine->setCurrentMappedFault(nullptr);
}

// ----- the fault -----

bool ZNFaultViewer::showFault(ZNFaultPatchManager* set, int faultId, bool force)
{
    if (!force && m_engine->isFrozen() && m_engine->isFaultProjected()) return false;
    const QString& mode = m_engine->getMouseModeName();
    const bool picking = mode == ZNFaultViewerEngine::faultPickingModeName() || mode == ZNFaultViewerEngine::eraseModeName();
    return picking ? m_engine->project3DFaultPatchForPicking(set, faultId, m_viewer->mapFromGlobal(QCursor::pos()))
                   : m_engine->project3DFaultPatch(set, faultId);
}

void ZNFaultViewer::faultGeometryChanged(ZNFaultPatchManager* set, int faultId)
{
    if (!m_engine->isFaultProjected() || !set || set != m_engine->getFaultPatchManager()) return;
    const int father = set->getFather(faultId);
    if (father != m_engine->getMappedFaultId()) return;
    // The same surface projected again; a new surface object (made by its fault set's
    // owner) is shown as the fault's.
    if (set->findFaultPatch(father) == m_engine->getCurrentFaultPatch()) m_engine->project3DFaultPatchForPicking();
    else showFault(set, father, true);
}

void ZNFaultViewer::updateCaption()
{
    onAction(QStringLiteral("UPDATE_CAPTION"));
}

void ZNFaultViewer::refreshPickedPoints()
{
    const ZNFaultPatchManager* set = m_engine->getFaultPatchManager();
    if (!set || !m_engine->isFaultProjected()) return;
    core::Array<core::PointWithBool> points;
    set->getFaultPickedPointArray(m_engine->getMappedFaultId(), points);
    m_engine->insertPickedPoint(points);
    m_viewer->update();
}

void ZNFaultViewer::setPickingSession(ZNFaultPickingSession* session)
{
    m_session = session;
    if (auto* tool = dynamic_cast<ZNFaultPickingTool*>(m_viewer->tool(ZNFaultViewerEngine::faultPickingModeName())))
        tool->setSession(session);
    m_eraser->setSession(session);
}

void ZNFaultViewer::setMouseMode(const QString& mode)
{
    const QString before = m_engine->getMouseModeName();
    if (mode.isEmpty()) m_engine->setMouseMode(before, false);
    else m_engine->setMouseMode(mode, true);
    const QString now = m_engine->getMouseModeName();
    const bool erasing = now == ZNFaultViewerEngine::eraseModeName();
    m_engine->removeDrawable(m_eraser->outline().get());
    if (erasing) m_engine->addDrawable(m_eraser->outline());
    m_viewer->setImageBackground(m_engine->backgroundColour());
    // Picking shows the wider image of the fault, with its sticks.
    const auto picking = [](const QString& m) {
        return m == ZNFaultViewerEngine::faultPickingModeName() || m == ZNFaultViewerEngine::eraseModeName();
    };
    if (picking(before) != picking(now) && m_engine->isFaultProjected())
        showFault(m_engine->getFaultPatchManager(), m_engine->getMappedFaultId(), true);
    m_viewer->update();
}

void ZNFaultViewer::showReferencePoint(const core::vec3& world)
{
    m_engine->setReferencePoint(world);
    if (m_engine->isWorldPointOnCurrentFrame(world)) m_engine->goto3DPoint(world);
}

// ----- what the engine says -----

void ZNFaultViewer::onAction(const QString& action)
{
    if (action == QLatin1String("UPDATE_CAPTION")) {
        const QString caption = m_engine->getCaption();
        setWindowTitle(caption);
        emit captionChanged(caption);
    } else if (action == QLatin1String("FRAME_CHANGED")) {
        ++m_projectionSerial;
        refreshProperties();
        remap();
    } else if (action == QLatin1String("UPDATE_PALETTE_MANAGER")) {
        m_viewer->setColourBarShown(m_engine->isColorScaleShown());
    } else if (action == QLatin1String("REFRESH_FAULT_VIEWER")) {
        if (m_engine->isFaultProjected())
            showFault(m_engine->getFaultPatchManager(), m_engine->getMappedFaultId(), true);
    } else if (action == QLatin1String("UPDATE_REF_POINT")) {
        emit gotoPointChanged(m_engine->gotoPoint());
    }
    m_viewer->update();
}

void ZNFaultViewer::refreshProperties()
{
    ZNPropertySheet sheet;
    m_engine->createProperty(sheet);
    m_properties->setSheet(sheet);
}

void ZNFaultViewer::onPropertyEdited(const QString& id, const QVariant& value)
{
    if (!m_engine->updateProperty(id, value)) {
        refreshProperties();  // the row goes back to the value in use
        return;
    }
    m_viewer->setImageBackground(m_engine->backgroundColour());
    refreshProperties();
    const ZNPropertySheet sheet = m_properties->sheet();
    const ZNPropertySheet::Group* mapping = sheet.group(kDataMappingGroup);
    bool mappingRow = false;
    for (int k = 0; mapping && k < mapping->properties.size(); ++k) mappingRow = mappingRow || mapping->properties[k].id == id;
    if (mappingRow) remap();
    m_viewer->update();
}

// ----- data mapping -----

bool ZNFaultViewer::mapData(const DataSource& source)
{
    if (m_mapping || !m_engine->isFaultProjected() || !m_engine->checkDomain(source.units)) return false;
    m_source = std::make_unique<DataSource>(source);
    startMapping();
    return true;
}

void ZNFaultViewer::setColourMap(img::ColourScale::Map map)
{
    m_map->setCurrentText(img::ColourScale::mapName(map));
    m_engine->setColourMap(map);
}

void ZNFaultViewer::remap()
{
    if (!m_source || !m_engine->isFaultProjected()) return;
    if (m_mapping) {
        m_remapPending = true;
        return;
    }
    startMapping();
}

void ZNFaultViewer::startMapping()
{
    auto projection = std::make_shared<img::Image>();
    core::mat4 imageToWorld;
    if (!m_engine->mappingInputs(*projection, imageToWorld)) return;
    m_mapping = true;
    m_remapPending = false;
    const DataSource source = *m_source;
    const fault::FaultPlaneMappingSettings settings = m_engine->mappingSettings();
    const quint64 serial = m_projectionSerial;
    auto mapped = std::make_shared<img::Image>();
    auto ok = std::make_shared<bool>(false);
    // The work opens its own block over the data, which no other thread reads through.
    ZNBackgroundTask::start(
        this,
        [projection, imageToWorld, source, settings, mapped, ok] {
            ZNBloc data;
            const bool opened = source.samples ? data.openImage(source.samples, source.units) : data.open(source.path);
            *ok = opened && fault::mapDataOnFaultPlane(*projection, imageToWorld, data, settings, *mapped, -1) ==
                                fault::FaultPlaneMappingResult::Done;
        },
        [this, mapped, ok, serial, source] {
            m_mapping = false;
            // A mapping made for an earlier projection is of no use: it is made again.
            const bool current = serial == m_projectionSerial;
            const bool shown = *ok && current && m_engine->setMappedImage(std::move(*mapped), source.name);
            if (m_remapPending || (!current && *ok)) {
                remap();
                return;
            }
            emit dataMapped(shown);
        });
}
