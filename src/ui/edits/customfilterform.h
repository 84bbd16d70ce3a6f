#pragma once

#include <QDialog>

#include "image/filters/filterkernel.h"

class QCheckBox;
class QSpinBox;
class QTableWidget;

namespace tirn {

/// A table of weights, typed or read from a file. A place left empty is 0.
class CustomFilterForm : public QDialog
{
    Q_OBJECT

public:
    explicit CustomFilterForm(int channels, QWidget* parent = nullptr);

    /// What stands in the table.
    FilterKernel kernel() const;
    void setKernel(const FilterKernel& kernel);
    /// The channel to filter, -1 for all.
    int channel() const;

public Q_SLOTS:
    /// Gives the table as many rows and columns as the boxes say; what stands in it stays as far as it fits.
    void resizeTable();
    /// Asks for a file with rows of numbers and shows them.
    void load();
    /// A box says what is no number, and the form stays.
    void accept() override;

private:
    /// The place of the first cell that holds no weight, row and column from 1; empty when there is none.
    QString wrongPlace() const;

    QTableWidget* m_table;
    QSpinBox* m_width;
    QSpinBox* m_height;
    QCheckBox* m_allChannels;
    QSpinBox* m_channel;
};

} // namespace tirn
