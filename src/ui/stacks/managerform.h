#pragma once

#include <vector>

#include <QMenu>

#include "ui/stacks/tirnstackitem.h"
#include "ui/toolform.h"

namespace tirn {

/// The loaded volumes, a row each, in the order of the application's list.
class ManagerForm : public ToolForm
{
    Q_OBJECT

public:
    ManagerForm(const FormServices& services, QWidget* parent);

    TirnStackItem* item(int row) const;
    int itemCount() const { return static_cast<int>(m_items.size()); }

public Q_SLOTS:
    /// Appends the row of volume i.
    void addItem(int i);
    /// Takes a row away; one out of range does nothing.
    void removeItem(int i);
    void timePointChanged();
    void paletteListChanged();
    /// Channels show other palettes or states than before.
    void paletteAssigned() { paletteListChanged(); }
    /// Takes away the rows of volumes that are gone, and makes those of new ones.
    void initTable();
    void contextMenuRequested_(int row, int column, const QPoint& globalPosition);
    /// These act on the current row.
    void makeCurrent();
    void closeStack();
    void changeVoxelDimensions();
    /// Marks the row of the current volume.
    void currentArrayChanged();

Q_SIGNALS:
    void currentStackClosed();
    void scaleChanged(double x, double y, double z);
    void paletteAssignment();
    void paletteStateChanged();
    void timepointChanged();
    void prepMovie();
    void returnMovie();

protected:
    void refresh(Changes changes) override;

private:
    int currentRow() const;
    StackId idOfRow(int row) const;
    void fitRow(int row);
    void buildMenu();
    void fitMinimumSize();

    std::vector<TirnStackItem*> m_items;
    QTableWidget* m_table;
    QMenu* m_menu;
};

} // namespace tirn
