#include "ui/stacks/managerform.h"

#include <algorithm>

#include <QHeaderView>
#include <QMenu>
#include <QTableWidget>
#include <QVBoxLayout>

#include "base/log.h"
#include "ui/formlist.h"
#include "ui/messages.h"
#include "ui/stacks/stackdimensionsform.h"
#include "volume/volumemaking.h"

namespace tirn {

namespace {

/// What a row gets besides the height of its item when its texts were changed.
constexpr int kRowMargin = 20;
/// A window shows so many rows without scrolling.
constexpr int kMostRowsShown = 3;

} // namespace

ManagerForm::ManagerForm(const FormServices& services, QWidget* parent)
    : ToolForm(services,
               Change::Stacks | Change::Voxels | Change::TimePoint | Change::Channels | Change::Palettes |
                   Change::Scale,
               parent),
      m_table(new QTableWidget(0, 1, this)), m_menu(new QMenu(this))
{
    setWindowTitle(tr("Stack Manager"));
    m_table->setObjectName("tblManager");
    m_table->horizontalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    buildMenu();
    connect(m_table, &QTableWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        const int row = m_table->rowAt(at.y());
        // The menu key may be pressed while the mouse is anywhere.
        contextMenuRequested_(row >= 0 ? row : currentRow(), 0, m_table->viewport()->mapToGlobal(at));
    });
    connect(m_table->verticalHeader(), &QHeaderView::sectionDoubleClicked, this, &ManagerForm::makeCurrent);
}

void ManagerForm::buildMenu()
{
    m_menu->setObjectName("rowMenu");
    QAction* edit = m_menu->addAction(tr("Edit palette"));
    edit->setEnabled(formRow(FormId::Palette).make != nullptr);
    connect(edit, &QAction::triggered, this, [this] { services().form(FormId::Palette, true); });
    m_menu->addSeparator();
    m_menu->addAction(tr("Make current array"), this, &ManagerForm::makeCurrent);
    m_menu->addAction(tr("Correct voxel dimensions"), this, &ManagerForm::changeVoxelDimensions);
    m_menu->addAction(tr("Load stack"), this, [this] { services().loads.chooseStack(); });
    m_menu->addAction(tr("Close stack"), this, &ManagerForm::closeStack);
}

TirnStackItem* ManagerForm::item(int row) const
{
    return row >= 0 && row < itemCount() ? m_items[static_cast<std::size_t>(row)] : nullptr;
}

int ManagerForm::currentRow() const { return m_table->currentRow(); }

StackId ManagerForm::idOfRow(int row) const { return item(row) != nullptr ? item(row)->id() : StackId::None; }

void ManagerForm::addItem(int i)
{
    TirnStackItem* made = nullptr;
    try {
        made = new TirnStackItem(scene().arrays.at(static_cast<std::size_t>(i))->id(), services(), this);
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate TirnStackItem");
        showMessage(this, QMessageBox::Warning, "Problem adding stack", "Could not add stack to table");
        return;
    }
    connect(made, &TirnStackItem::paletteAssigned, this, &ManagerForm::paletteAssignment);
    connect(made, &TirnStackItem::paletteStateChanged, this, &ManagerForm::paletteStateChanged);
    connect(made, &TirnStackItem::timepointChanged, this, &ManagerForm::timepointChanged);
    connect(this, &ManagerForm::prepMovie, made, &TirnStackItem::prepForMovie);
    connect(this, &ManagerForm::returnMovie, made, &TirnStackItem::returnFromMovie);
    connect(made, &TirnStackItem::entered, this, [this, made] {
        const auto found = std::find(m_items.begin(), m_items.end(), made);
        m_table->setCurrentCell(static_cast<int>(found - m_items.begin()), 0);
    });
    m_items.push_back(made);
    const int row = m_table->rowCount();
    m_table->insertRow(row);
    m_table->setVerticalHeaderItem(row, new QTableWidgetItem);
    m_table->setCellWidget(row, 0, made);
    fitRow(row);
    fitMinimumSize();
}

void ManagerForm::fitRow(int row)
{
    m_table->setRowHeight(row, item(row)->sizeHint().height());
    m_table->setColumnWidth(0, std::max(m_table->columnWidth(0), item(row)->sizeHint().width()));
}

void ManagerForm::fitMinimumSize()
{
    const int frame = 2 * m_table->frameWidth();
    int height = frame;
    for (int row = 0; row < std::min(kMostRowsShown, m_table->rowCount()); ++row)
        height += m_table->rowHeight(row);
    const int width = m_items.empty() ? 0 : m_items.front()->sizeHint().width();
    // Room for the header and for a scroll bar that more rows bring.
    m_table->setMinimumSize(width + frame + m_table->verticalHeader()->sizeHint().width() +
                                style()->pixelMetric(QStyle::PM_ScrollBarExtent),
                            height);
}

void ManagerForm::removeItem(int i)
{
    if (item(i) == nullptr)
        return;
    // The table deletes the item with its row.
    m_items.erase(m_items.begin() + i);
    m_table->removeRow(i);
    fitMinimumSize();
}

void ManagerForm::initTable()
{
    for (int i = itemCount() - 1; i >= 0; --i) {
        if (scene().find(idOfRow(i)) == nullptr)
            removeItem(i);
    }
    // Volumes come at the end of their list.
    for (int i = itemCount(); i < static_cast<int>(scene().arrays.size()); ++i)
        addItem(i);
}

void ManagerForm::refresh(Changes changes)
{
    if (changes & Change::Stacks) {
        initTable();
        currentArrayChanged();
    }
    if (changes & Change::TimePoint)
        timePointChanged();
    if (changes & (Change::Palettes | Change::Channels))
        paletteListChanged();
    if (changes & (Change::Voxels | Change::Scale)) {
        for (TirnStackItem* each : m_items)
            each->updateDimensions();
    }
}

void ManagerForm::timePointChanged()
{
    for (TirnStackItem* each : m_items)
        each->timePointChanged();
}

void ManagerForm::paletteListChanged()
{
    for (TirnStackItem* each : m_items)
        each->refreshPalettes();
}

void ManagerForm::contextMenuRequested_(int row, int /*column*/, const QPoint& globalPosition)
{
    if (item(row) == nullptr)
        return;
    m_table->setCurrentCell(row, 0);
    m_menu->popup(globalPosition);
}

void ManagerForm::makeCurrent() { services().stacks.makeCurrent(idOfRow(currentRow())); }

void ManagerForm::closeStack()
{
    const StackId id = idOfRow(currentRow());
    if (id == StackId::None)
        return;
    logDebug("current %d stacks %d", scene().currentIndex, itemCount());
    // Takes the row away, too.
    services().stacks.closeStack(id);
    logDebug("after delete current %d stacks %d", scene().currentIndex, itemCount());
    if (itemCount() > 0)
        logDebug("final current %d stacks %d", scene().currentIndex, itemCount());
    Q_EMIT currentStackClosed();
}

void ManagerForm::currentArrayChanged()
{
    const int current = scene().currentIndex;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        QTableWidgetItem* header = m_table->verticalHeaderItem(row);
        header->setText(row == current ? QString(QChar(0x25B6)) : QString());
        header->setToolTip(row == current ? tr("This stack is shown.") : tr("Double click to show it."));
    }
    if (item(current) != nullptr)
        m_table->setCurrentCell(current, 0);
}

void ManagerForm::changeVoxelDimensions()
{
    const StackId id = idOfRow(currentRow());
    const VoxelArray* array = scene().find(id);
    if (array == nullptr)
        return;
    StackDimensionsForm form(this);
    form.setDimensions(array->stack().dimX, array->stack().dimY, array->stack().dimZ);
    // The stack may have been closed meanwhile.
    if (form.exec() != QDialog::Accepted || scene().find(id) == nullptr)
        return;
    const AxisScale scale = scaleOfVoxels(form.getX(), form.getY(), form.getZ(), array->sliceStep);
    services().model.editUndoably(tr("voxel dimensions"), 0, Change::Scale, [&](Scene& shown) {
        VoxelArray& volume = *shown.find(id);
        volume.stack().dimX = form.getX();
        volume.stack().dimY = form.getY();
        volume.stack().dimZ = form.getZ();
        volume.scale = scale;
        volume.baseScale = scale;
    });
    const int row = scene().indexOf(id);
    m_table->setRowHeight(row, item(row)->sizeHint().height() + kRowMargin);
    fitMinimumSize();
    Q_EMIT scaleChanged(scale.x, scale.y, scale.z);
}

} // namespace tirn
