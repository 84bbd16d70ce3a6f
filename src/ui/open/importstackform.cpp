#include "ui/open/importstackform.h"

#include <algorithm>
#include <limits>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include "base/log.h"
#include "ui/messages.h"
#include "ui/open/startload.h"
#include "ui/widgets/filechooser.h"
#include "ui/widgets/taborder.h"

namespace tirn {

namespace {

constexpr int kLargestSide = 65535;
constexpr int kMostChannels = 64;
constexpr int kMostSubsampling = 8;
constexpr int kLeastBits = 8;
constexpr int kMostBits = 16;
constexpr int kVisibleCharacters = 40;
const QColor kAlarm(225, 0, 0);

std::optional<std::int64_t> sizeOf(const QString& name)
{
    const QFileInfo file(name);
    return file.isFile() ? std::optional<std::int64_t>(file.size()) : std::nullopt;
}

QString bytesText(std::int64_t bytes) { return QString::number(bytes) + " B"; }

} // namespace

ImportStackForm::ImportStackForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, {}, parent)
{
    setWindowTitle(tr("Import Stack"));
    auto* buttons = new QDialogButtonBox(this);
    auto* open = buttons->addButton(tr("&Open"), QDialogButtonBox::AcceptRole);
    auto* cancel = buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    open->setObjectName("btnOpen");
    cancel->setObjectName("btnCancel");
    auto* columns = new QHBoxLayout;
    QWidget* fields = fileRows();
    QWidget* ranges = rangeRows();
    columns->addWidget(fields, 1);
    columns->addWidget(ranges, 1);
    auto* name = new QFormLayout;
    name->addRow(tr("Fi&lename"), m_file);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(name);
    layout->addLayout(columns);
    layout->addStretch(1);
    layout->addWidget(buttons);
    chainTabs({m_file, fields, ranges, buttons});
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportStackForm::openStack);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_file, &FileChooser::fileNameChanged, this, &ImportStackForm::updateRealSize);
    connect(m_bitDepth, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &ImportStackForm::updateEstimatedSize);
    for (QSpinBox* box : {m_offset, m_channels, m_x, m_y})
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, &ImportStackForm::updateEstimatedSize);
    connect(m_z, qOverload<int>(&QSpinBox::valueChanged), this, &ImportStackForm::updateSlices);
    resetNumbers();
}

QSpinBox* ImportStackForm::spinBox(const char* name, int minimum, int maximum)
{
    auto* made = new QSpinBox(this);
    made->setObjectName(name);
    made->setRange(minimum, maximum);
    return made;
}

QWidget* ImportStackForm::fileRows()
{
    m_file = new FileChooser(FileChooser::Mode::OpenFile, this);
    m_file->setObjectName("fchRaw");
    m_file->setTitle(tr("Choose a file to open"));
    m_file->setFilter(tr("Raw (*.*)"));
    m_file->setMinimumWidth(kVisibleCharacters * fontMetrics().averageCharWidth());
    m_swap = new QCheckBox(tr("S&wap Endian"), this);
    m_swap->setObjectName("chkEndian");
    m_offset = spinBox("spnOffset", 0, std::numeric_limits<int>::max());
    m_bitDepth = new QComboBox(this);
    m_bitDepth->setObjectName("cboBitDepth");
    for (int bits = kLeastBits; bits <= kMostBits; ++bits) {
        m_bitDepth->addItem(QString::number(bits));
        // The reader knows bytes and words.
        if (bits != kLeastBits && bits != kMostBits)
            static_cast<QStandardItemModel*>(m_bitDepth->model())->item(bits - kLeastBits)->setEnabled(false);
    }
    m_channels = spinBox("spnCh", 1, kMostChannels);
    m_x = spinBox("spnX", 1, kLargestSide);
    m_y = spinBox("spnY", 1, kLargestSide);
    m_z = spinBox("spnZ", 1, kLargestSide);
    auto* box = new QWidget(this);
    auto* rows = new QFormLayout(box);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addRow(m_swap);
    rows->addRow(tr("&Byte Offset"), m_offset);
    rows->addRow(tr("Bit &Depth"), m_bitDepth);
    rows->addRow(tr("C&hannels"), m_channels);
    rows->addRow(tr("&X"), m_x);
    rows->addRow(tr("&Y"), m_y);
    rows->addRow(tr("&Z"), m_z);
    return box;
}

QWidget* ImportStackForm::rangeRows()
{
    m_first = spinBox("spnFirst", 0, kLargestSide - 1);
    m_last = spinBox("spnLast", 0, 0);
    // A step of 0 can be typed, and is refused with a reason.
    m_step = spinBox("spnStep", 0, kLargestSide);
    m_subsample = spinBox("spnSubsample", 1, kMostSubsampling);
    m_2D = new QRadioButton(tr("&2D Texmaps"), this);
    m_2D->setObjectName("rdo2D");
    m_2D->setChecked(true);
    m_3D = new QRadioButton(tr("&3D Texmaps"), this);
    m_3D->setObjectName("rdo3D");
    if (!services().card.hasTexture3D) {
        m_3D->setEnabled(false);
        m_3D->setToolTip(tr("Sorry your video card does not support 3D texture maps."));
    }
    m_realSize = new QLabel(this);
    m_realSize->setObjectName("lblReal");
    m_estimatedSize = new QLabel(this);
    m_estimatedSize->setObjectName("lblEstimated");
    m_estimatedSize->setAutoFillBackground(true);
    auto* box = new QWidget(this);
    auto* rows = new QFormLayout(box);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addRow(tr("&First Slice"), m_first);
    rows->addRow(tr("L&ast Slice"), m_last);
    rows->addRow(tr("&Step"), m_step);
    rows->addRow(tr("S&ub sample"), m_subsample);
    rows->addRow(m_2D);
    rows->addRow(m_3D);
    rows->addRow(tr("File size:"), m_realSize);
    rows->addRow(tr("Specified size:"), m_estimatedSize);
    return box;
}

void ImportStackForm::resetNumbers()
{
    for (QSpinBox* box : {m_x, m_y, m_z, m_channels, m_step})
        box->setValue(1);
    for (QSpinBox* box : {m_offset, m_first})
        box->setValue(0);
    {
        const QSignalBlocker blocker(m_last);
        m_last->setValue(0);
    }
    m_realSize->setText("00 B");
    m_estimatedSize->setText("1 B");
}

void ImportStackForm::showEvent(QShowEvent* event)
{
    ToolForm::showEvent(event);
    if (event->spontaneous())
        return;
    resetNumbers();
    m_file->setPathHint(services().settings.stackPath);
    if (m_isNamed)
        updateRealSize(m_file->fileName());
    else
        QMetaObject::invokeMethod(this, &ImportStackForm::chooseFile, Qt::QueuedConnection);
    m_isNamed = false;
}

/// The question of a form that came up without a name.
void ImportStackForm::chooseFile()
{
    if (isVisible())
        m_file->browse();
}

void ImportStackForm::setFileName(const QString& name)
{
    m_file->setFileName(name);
    m_isNamed = !isVisible();
    updateRealSize(name);
}

void ImportStackForm::updateRealSize(const QString& name)
{
    const std::optional<std::int64_t> size = sizeOf(name);
    m_realSize->setText(size ? bytesText(*size) : tr("unknown"));
    updateEstimatedSize();
}

void ImportStackForm::updateEstimatedSize()
{
    const std::int64_t specified = specifiedRawSize(described());
    m_estimatedSize->setText(bytesText(specified));
    // An empty palette takes the colours of the form.
    QPalette colours;
    if (specified > sizeOf(m_file->fileName()).value_or(0)) {
        colours.setColor(QPalette::Window, kAlarm);
        colours.setColor(QPalette::WindowText, Qt::white);
    }
    m_estimatedSize->setPalette(colours);
}

void ImportStackForm::updateSlices(int slices)
{
    m_last->setMaximum(slices - 1);
    m_last->setValue(slices - 1);
    updateEstimatedSize();
}

RawImport ImportStackForm::described() const
{
    RawImport import;
    import.offset = m_offset->value();
    import.x = m_x->value();
    import.y = m_y->value();
    import.z = m_z->value();
    import.channels = m_channels->value();
    import.depthItem = m_bitDepth->currentIndex();
    import.first = m_first->value();
    import.last = m_last->value();
    import.step = m_step->value();
    return import;
}

void ImportStackForm::openStack()
{
    const QString name = m_file->fileName();
    const RawImport import = described();
    const QString problem = rawImportProblem(import, name, sizeOf(name));
    if (!problem.isEmpty()) {
        showMessage(this, QMessageBox::Information, tr("File Load Error"), problem);
        return;
    }
    logDebug("*** made it here ***");
    LoadDescription load = freshLoad(services());
    load.filesToLoad = {{name}};
    load.timePoints = 1;
    load.setRaw(import.offset, import.x, import.y, import.z, import.channels, import.bitDepth());
    load.setRange(import.first, import.last, import.step, m_subsample->value(),
                  m_3D->isChecked() ? GL_TEXTURE_3D : GL_TEXTURE_2D, false, 0, false);
    load.rawLayout.swapBytes = m_swap->isChecked();
    startLoadOf(*this, services(), std::move(load));
}

} // namespace tirn
