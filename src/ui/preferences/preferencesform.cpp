#include "ui/preferences/preferencesform.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "ui/widgets/filechooser.h"

namespace tirn {

namespace {

/// Chooses a limit in a list, or the one that is used in its place.
void showLimit(QComboBox& list, int limit, int largest)
{
    list.setCurrentText(QString::number(usableTextureLimit(limit, largest)));
}

/// What is answered by a check mark.
struct SwitchRow
{
    const char* name;
    const char* text;
    bool Settings::*value;
};

constexpr SwitchRow kSwitches[] = {
    {"chkFitOnOpen", "Fit a stack into the window when it opens", &Settings::fitOnOpen},
    {"chkStretchOnOpen", "Stretch a stack to its used bits when it opens", &Settings::stretchOnOpen},
    {"chkMoveAlongScreen", "Shift and mouse move along the screen", &Settings::moveAlongScreen},
};

} // namespace

QStringList textureLimits(int largest)
{
    QStringList items;
    for (int limit = kLeastTextureLimit; limit <= usableTextureLimit(largest, largest); limit *= 2)
        items.append(QString::number(limit));
    return items;
}

PreferencesForm::PreferencesForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, {}, parent), m_favorites(new FileChooser(FileChooser::Mode::Directory, this)),
      m_watermark(new QLineEdit(this)), m_flashRate(new QSpinBox(this)), m_paletteSize(new QLabel(this)),
      m_largest2D(new QLabel(this)), m_largest3D(new QLabel(this))
{
    setWindowTitle(tr("Preferences"));
    m_favorites->setObjectName("favoritesChooser");
    m_favorites->setTitle(tr("Favorite Palette's Folder"));
    m_watermark->setObjectName("txtWatermark");
    m_flashRate->setObjectName("spnFlashRate");
    m_flashRate->setRange(1, kLongestFlash);
    m_flashRate->setSuffix(tr(" ms"));
    m_generation = combo("cboPaletteGeneration", choiceTexts(SettingsChoice::PaletteGeneration));
    m_blending = combo("cboBlending", choiceTexts(SettingsChoice::Blending));
    m_encode = combo("cboEncode", choiceTexts(SettingsChoice::Encode));
    m_timeSeriesEncode = combo("cbo4DEncode", choiceTexts(SettingsChoice::Encode));
    m_usePBuffers = combo("cboUsePBuffers", choiceTexts(SettingsChoice::UsePBuffers));
    m_drawing = combo("cboDrawing", choiceTexts(SettingsChoice::Drawing));
    m_limit2D = combo("cbo2DLimit", {});
    m_limit3D = combo("cbo3DLimit", {});
    m_paletteSize->setObjectName("lblPaletteSize");
    m_largest2D->setObjectName("lbl2DTexture");
    m_largest3D->setObjectName("lbl3DTexture");
    for (const SwitchRow& row : kSwitches) {
        auto* box = new QCheckBox(tr(row.text), this);
        box->setObjectName(row.name);
        m_switches.push_back(box);
    }
    auto* note = new QLabel(
        tr("<b>All palettes in the favorite palletes folder will be loaded when Tirn starts.</b>"), this);
    auto* rows = new QFormLayout;
    rows->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    rows->addRow(tr("Favorite Palette's Folder"), m_favorites);
    rows->addRow(note);
    rows->addRow(tr("Watermark Text"), m_watermark);
    rows->addRow(tr("Default Palette Generation"), m_generation);
    rows->addRow(tr("Default Blending"), m_blending);
    rows->addRow(tr("Default 3D Encode"), m_encode);
    rows->addRow(tr("Default 4D Encode"), m_timeSeriesEncode);
    rows->addRow(tr("Flash/Toggle Rate"), m_flashRate);
    for (QCheckBox* box : m_switches)
        rows->addRow(box);
    rows->addRow(tr("Use PBuffers"), m_usePBuffers);
    rows->addRow(tr("Drawing"), m_drawing);
    rows->addRow(tr("2D Texture Dimension Limit"), m_limit2D);
    rows->addRow(tr("3D Texture Dimension Limit"), m_limit3D);
    for (QLabel* label : {m_paletteSize, m_largest2D, m_largest3D})
        rows->addRow(label);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("&Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PreferencesForm::OkClicked);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addStretch(1);
    layout->addWidget(buttons);
}

QComboBox* PreferencesForm::combo(const char* name, const QStringList& items)
{
    auto* made = new QComboBox(this);
    made->setObjectName(name);
    made->addItems(items);
    return made;
}

void PreferencesForm::refresh(Changes /*changes*/)
{
    const GlCapabilities& card = services().card;
    m_settings = services().settings;
    m_favorites->setFileName(m_settings.favoritePalettesPath);
    m_favorites->setPathHint(m_settings.palettePath);
    m_watermark->setText(m_settings.watermarkText);
    m_generation->setCurrentIndex(m_settings.paletteGeneration);
    m_blending->setCurrentIndex(std::max(0, m_settings.blending));
    m_encode->setCurrentIndex(m_settings.defaultEncode);
    m_timeSeriesEncode->setCurrentIndex(m_settings.defaultTimeSeriesEncode);
    m_flashRate->setValue(m_settings.flashRate);
    m_usePBuffers->setCurrentIndex(m_settings.usePBuffers ? 0 : 1);
    for (std::size_t i = 0; i < m_switches.size(); ++i)
        m_switches[i]->setChecked(m_settings.*kSwitches[i].value);
    m_drawing->setCurrentIndex(m_settings.drawing);
    m_limit2D->clear();
    m_limit2D->addItems(textureLimits(card.maxTexture2D));
    showLimit(*m_limit2D, m_settings.texLimit2D, card.maxTexture2D);
    m_limit3D->clear();
    m_limit3D->addItems(textureLimits(card.maxTexture3D));
    m_limit3D->addItem(tr("Disable blocking"));
    if (m_settings.texLimit3D >= kNoTextureBlocking)
        m_limit3D->setCurrentIndex(m_limit3D->count() - 1);
    else
        showLimit(*m_limit3D, m_settings.texLimit3D, card.maxTexture3D);
    m_paletteSize->setText(tr("Max Palette Size: ") + QString::number(card.maxTexture2D));
    m_largest2D->setText(tr("Max 2D Texture Dimension: ") + QString::number(card.maxTexture2D));
    m_largest3D->setText(tr("Max 3D Texture Dimension: ") + QString::number(card.maxTexture3D));
}

Settings PreferencesForm::settings() const
{
    Settings settings = m_settings;
    settings.favoritePalettesPath = m_favorites->fileName();
    settings.watermarkText = m_watermark->text();
    settings.paletteGeneration = m_generation->currentIndex();
    settings.blending = m_blending->currentIndex();
    settings.defaultEncode = m_encode->currentIndex();
    settings.defaultTimeSeriesEncode = m_timeSeriesEncode->currentIndex();
    settings.flashRate = m_flashRate->value();
    settings.usePBuffers = m_usePBuffers->currentIndex() == 0;
    for (std::size_t i = 0; i < m_switches.size(); ++i)
        settings.*kSwitches[i].value = m_switches[i]->isChecked();
    settings.drawing = m_drawing->currentIndex();
    settings.texLimit2D = m_limit2D->currentText().toInt();
    settings.texLimit3D = m_limit3D->currentIndex() == m_limit3D->count() - 1
                              ? kNoTextureBlocking
                              : m_limit3D->currentText().toInt();
    return settings;
}

void PreferencesForm::OkClicked()
{
    m_settings = settings();
    services().storePreferences(m_settings);
    accept();
}

} // namespace tirn
