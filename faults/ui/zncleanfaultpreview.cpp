#include "zncleanfaultpreview.h"

#include <cstdlib>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QSpacerItem>
#include <QVBoxLayout>

#include <core/conventions.h>
#include <zn3dviewer.h>
#include <znprocess.h>

namespace {

// The look of the buttons: a rounded, lit button whose light changes under the cursor
// and when pressed. Each rule but the last ends with one blank, as the sheets were always
// written.
const char* const kButtonRule =
    "QPushButton {color: black;border: 2px solid #555;border-radius: 11px;padding: 5px;"
    "background: qradialgradient(cx: 0.3, cy: -0.4,fx: 0.3, fy: -0.4,radius: 1.35, stop: 0 #fff, "
    "stop: 1 #888);min-width: 80px;} ";
const char* const kPreviewRule =
    "QPushButton {color: red;border: 2px solid #555;border-radius: 11px;padding: 5px;"
    "background: qradialgradient(cx: 0.3, cy: -0.4,fx: 0.3, fy: -0.4,radius: 1.35, stop: 0 #fff, "
    "stop: 1 #888);min-width: 80px;} ";
const char* const kHoverRule =
    "QPushButton:hover {background: qradialgradient(cx: 0.3, cy: -0.4,fx: 0.3, fy: -0.4,"
    "radius: 1.35, stop: 0 #fff, stop: 1 #bbb);} ";
const char* const kPressedRule =
    "QPushButton:pressed {background: qradialgradient(cx: 0.4, cy: -0.1,fx: 0.4, fy: -0.1,"
    "radius: 1.35, stop: 0 #fff, stop: 1 #ddd);}";

constexpr int kListMaximumWidth = 130;
constexpr int kInitialWidth = 1000;
constexpr int kInitialHeight = 500;
constexpr int kSpacerWidth = 15;
constexpr int kSpacerHeight = 20;
constexpr int kRowIconSize = 48;  // the pairs' preview pictures

QPushButton* makeButton(QWidget* parent, const char* name)
{
    auto* button = new QPushButton(parent);
    button->setObjectName(QLatin1String(name));
    return button;
}

} // namespace

ZNCleanFaultPreview::ZNCleanFaultPreview(QWidget* parent) : QWidget(parent)
{
    setWindowIcon(ZNProcess::getIcon(QStringLiteral("faultmergeassistant")));
    if (objectName().isEmpty()) setObjectName(QStringLiteral("ZNCleanFaultPreview"));
    resize(kInitialWidth, kInitialHeight);

    auto* mainVbox = new QVBoxLayout(this);
    mainVbox->setObjectName(QStringLiteral("mainVbox"));
    auto* top = new QHBoxLayout();
    auto* bottom = new QHBoxLayout();
    mainVbox->addLayout(top);
    mainVbox->addLayout(bottom);

    listView = new QListWidget(this);
    listView->setObjectName(QStringLiteral("listView"));
    listView->setMaximumWidth(kListMaximumWidth);
    listView->setIconSize(QSize(kRowIconSize, kRowIconSize));
    m_left3dViewer = new ZN3DViewer(this);
    m_right3dViewer = new ZN3DViewer(this);
    top->addWidget(listView, 0);
    top->addWidget(m_left3dViewer, 1);
    top->addWidget(m_right3dViewer, 1);

    acceptButton = makeButton(this, "acceptButton");
    refuseButton = makeButton(this, "refuseButton");
    previewButton = makeButton(this, "previewButton");
    previewButton->setText(QStringLiteral("PREVIEW"));
    undoButton = makeButton(this, "undoButton");
    undoButton->setIcon(ZNProcess::getIcon(QStringLiteral("faultundo24")));
    redoButton = makeButton(this, "redoButton");
    redoButton->setIcon(ZNProcess::getIcon(QStringLiteral("faultredo24")));
    horizontalSpacer = new QSpacerItem(kSpacerWidth, kSpacerHeight, QSizePolicy::Expanding, QSizePolicy::Minimum);
    closeButton = makeButton(this, "closeButton");
    for (QPushButton* button : {acceptButton, refuseButton, previewButton, undoButton, redoButton})
        bottom->addWidget(button);
    bottom->addItem(horizontalSpacer);
    bottom->addWidget(closeButton);

    const QString hoverAndPressed = QLatin1String(kHoverRule) + QLatin1String(kPressedRule);
    acceptButton->setStyleSheet(QLatin1String(kButtonRule) + hoverAndPressed);
    refuseButton->setStyleSheet(QLatin1String(kButtonRule) + hoverAndPressed);
    previewButton->setStyleSheet(QLatin1String(kPreviewRule) + hoverAndPressed);

    retranslateUi();

    connect(listView, &QListWidget::currentItemChanged, this, &ZNCleanFaultPreview::slotListViewClicked);
    connect(acceptButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::acceptButtonClicked);
    connect(refuseButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::refuseButtonClicked);
    connect(previewButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::previewButtonClicked);
    connect(undoButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::undoButtonClicked);
    connect(redoButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::redoButtonClicked);
    connect(closeButton, &QPushButton::clicked, this, &ZNCleanFaultPreview::closeButtonClicked);
}

ZNCleanFaultPreview::~ZNCleanFaultPreview()
{
    // The list goes with the dialog: its last change must not reach the host any more.
    disconnect(listView, nullptr, this, nullptr);
    sendActionToMdiInternal(QStringLiteral("UPDATE_WINDOW_MANAGER"));
}

void ZNCleanFaultPreview::retranslateUi()
{
    const auto tr = [](const char* text) { return QCoreApplication::translate("ZNCleanFaultPreview", text); };
    setWindowTitle(tr("Fault Cleaning"));
    acceptButton->setText(tr("Merge"));
    refuseButton->setText(tr("Skip"));
    closeButton->setText(tr("Close"));
}

// ----- rows -----

void ZNCleanFaultPreview::updateDupletArray()
{
    QStringList rows;
    rows.reserve(m_dupletArray.size());
    for (const core::Duplet& pair : m_dupletArray)
        rows << QString::number(pair.a) + QStringLiteral(" <-> ") + QString::number(pair.b);
    fillWithStringList(rows);
}

void ZNCleanFaultPreview::fillWithStringList(const QStringList& rows)
{
    listView->clear();
    listView->addItems(rows);
}

void ZNCleanFaultPreview::removeItem(int row)
{
    const int count = m_dupletArray.size();
    if (row >= 0 && row < count) {
        m_dupletArray[row] = m_dupletArray.last();
        m_dupletArray.resize(count - 1);
        const int parallel = m_parallelArray.size();
        if (row < parallel) {
            m_parallelArray[row] = m_parallelArray.last();
            m_parallelArray.resize(parallel - 1);
        }
    }
    updateDupletArray();
}

core::Duplet ZNCleanFaultPreview::getCurrentItem() const
{
    const core::Duplet* pair = m_dupletArray.at(listView->currentRow());
    if (!pair) return core::Duplet(core::kNoValue, core::kNoValue);
    return core::Duplet(std::abs(pair->a), std::abs(pair->b));
}

int ZNCleanFaultPreview::getCurrentIntItem() const
{
    return listView->currentRow();
}

void ZNCleanFaultPreview::selectFirstItem()
{
    selectItem(0);
}

void ZNCleanFaultPreview::selectNextItem()
{
    selectItem(listView->currentRow() + 1);
}

void ZNCleanFaultPreview::selectItem(int row)
{
    if (row < 0 || row >= listView->count()) return;
    listView->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
}

void ZNCleanFaultPreview::setPixmap(int row, QPixmap& pixmap)
{
    if (QListWidgetItem* item = listView->item(row)) item->setIcon(QIcon(pixmap));
}

// ----- gestures -----

void ZNCleanFaultPreview::sendActionToMdiInternal(const QString& action)
{
    ZNProcess::sendActionToMdi(action, nullptr);
}

void ZNCleanFaultPreview::slotListViewClicked(QListWidgetItem*, QListWidgetItem*)
{
    sendActionToMdiInternal(QStringLiteral("DISPLAY_CLEAN_FAULT_PREVIEW_SELECTED_ITEM"));
}

void ZNCleanFaultPreview::acceptButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("ACCEPT_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::refuseButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("REFUSE_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::previewButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("PREVIEW_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::undoButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("UNDO_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::redoButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("REDO_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::closeButtonClicked()
{
    sendActionToMdiInternal(QStringLiteral("CLOSE_CLEAN_FAULT_PREVIEW"));
}

void ZNCleanFaultPreview::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (QWidget* parent = parentWidget()) parent->close();
    sendActionToMdiInternal(QStringLiteral("CLOSE_CLEAN_FAULT_PREVIEW"));
}
