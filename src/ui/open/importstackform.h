#pragma once

#include "formats/raw/rawsizes.h"
#include "ui/toolform.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QRadioButton;
class QSpinBox;

namespace tirn {

class FileChooser;

/// Loads a file without a header: its size, depth and channels are typed in.
class ImportStackForm : public ToolForm
{
    Q_OBJECT

public:
    ImportStackForm(const FormServices& services, QWidget* parent);

public Q_SLOTS:
    /// A form that is shown without a name asks for one.
    void setFileName(const QString& name);
    void openStack();
    void updateRealSize(const QString& name);
    void updateEstimatedSize();
    /// The number of slices decides about the last one.
    void updateSlices(int slices);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QSpinBox* spinBox(const char* name, int minimum, int maximum);
    QWidget* fileRows();
    QWidget* rangeRows();
    void resetNumbers();
    void chooseFile();
    RawImport described() const;

    FileChooser* m_file;
    QCheckBox* m_swap;
    QSpinBox* m_offset;
    QComboBox* m_bitDepth;
    QSpinBox* m_channels;
    QSpinBox* m_x;
    QSpinBox* m_y;
    QSpinBox* m_z;
    QSpinBox* m_first;
    QSpinBox* m_last;
    QSpinBox* m_step;
    QSpinBox* m_subsample;
    QRadioButton* m_2D;
    QRadioButton* m_3D;
    QLabel* m_realSize;
    QLabel* m_estimatedSize;
    /// A name came before the form was shown.
    bool m_isNamed = false;
};

} // namespace tirn
