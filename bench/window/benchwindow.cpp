#include "window/benchwindow.h"

#include <algorithm>

#include <QColor>
#include <QCoreApplication>
#include <QEventLoop>

#include "image/imagefile.h"

namespace tirn::bench {

std::shared_ptr<ImageFile> benchBlobs(int x, int y, int z, int channels)
{
    auto image = std::make_shared<ImageFile>(x, y, z, channels, 8);
    std::uint8_t* out = image->stackData();
    for (int k = 0; k < z; ++k) {
        for (int j = 0; j < y; ++j) {
            for (int i = 0; i < x; ++i) {
                for (int c = 0; c < channels; ++c)
                    *out++ = static_cast<std::uint8_t>(((i * (3 + c)) ^ (j * (2 + c)) ^ (k * 5)) & 255);
            }
        }
    }
    image->generateStatistics();
    return image;
}

BenchWindow::BenchWindow()
{
    m_card = m_info.readCapabilities();
    m_shaders = std::make_unique<Shaders>();
    const WidgetServices services{m_card, m_model, *m_shaders, m_lock, m_events, m_hidden};
    m_widget = std::make_unique<TirnWidget>("bench", services, false, nullptr);
    m_tables = std::make_unique<GlPaletteTables>(m_widget->threadKind(), &m_hidden);
    const QColor colours[] = {QColor(255, 160, 60), QColor(80, 160, 255), QColor(120, 255, 120)};
    for (const QColor& colour : colours)
        scene().palettes.push_back(std::make_unique<Palette>(colour, 8, m_tables.get()));
    m_widget->setFixedSize(512, 512);
    m_widget->show();
    while (!m_widget->surface().isReady())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

BenchWindow::~BenchWindow()
{
    closeAll();
    m_widget.reset();
    m_hidden.makeCurrent();
    scene().palettes.clear();
    m_shaders.reset();
}

VoxelArray& BenchWindow::show(int x, int y, int z, int channels, GLenum target)
{
    m_widget->stopAndWait();
    m_hidden.makeCurrent();
    auto array =
        std::make_unique<VoxelArray>(VolumeOptions{m_widget->threadKind(), 1024, 512, false, nullptr});
    array->appendImage(benchBlobs(x, y, z, channels));
    array->stack() = array->images().front()->attributes();
    array->setChannelCount(channels);
    array->setTimePoints(1);
    array->encode(target, -1);
    gl().Finish();
    for (int c = 0; c < channels; ++c)
        array->channels()[static_cast<std::size_t>(c)].display.palette = c % 3;
    scene().arrays.push_back(std::move(array));
    scene().currentIndex = static_cast<int>(scene().arrays.size()) - 1;
    return *scene().arrays.back();
}

void BenchWindow::closeAll()
{
    m_widget->stopAndWait();
    m_hidden.makeCurrent();
    scene().currentIndex = -1;
    scene().arrays.clear();
}

double BenchWindow::frame()
{
    QCoreApplication::processEvents();
    m_widget->renderThread().wait();
    m_widget->requestFrame();
    m_widget->renderThread().wait();
    return m_widget->renderThread().lastFrameSeconds();
}

std::vector<double> BenchWindow::turn()
{
    std::vector<double> seconds;
    for (int step = 0; step < 36; ++step) {
        m_widget->changeVoxelRotation(0, step * 10.0, 0);
        seconds.push_back(frame());
    }
    m_widget->changeVoxelRotation(0, 0, 0);
    std::sort(seconds.begin(), seconds.end());
    return seconds;
}

namespace {
std::unique_ptr<BenchWindow> theWindow;
}

BenchWindow& benchWindow()
{
    if (theWindow == nullptr)
        theWindow = std::make_unique<BenchWindow>();
    return *theWindow;
}

void closeBenchWindow() { theWindow.reset(); }

} // namespace tirn::bench
