// The whole program, measured from outside: how soon it is there, how soon a stack named at its start is
// seen, and how well it answers while it loads.
//
//   tirn_program_bench start [repetitions]      needs a display
//   tirn_program_bench load [megabytes] [2|3]   2D or 3D textures
//   tirn_program_bench edit [edits]             strokes in the palette editor
//
// Each measurement is a process of its own, so that none finds what an earlier one has left.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include "app/tirnapplication.h"
#include "base/stopwatch.h"
#ifdef TIRN_HAS_PLOTS
#include <QCheckBox>
#include <QMouseEvent>

#include "ui/palettes/paletteform.h"
#endif

namespace tirn::bench {
namespace {

/// Seconds on a clock that all processes share.
double now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double readSeconds = 0;
double statisticsSeconds = 0;

/// The log is no part of what is measured, but for the times that stand in it, in seconds.
void takeTimes(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
{
    if (text.startsWith("File I/O took "))
        readSeconds += text.section(' ', 3, 3).toDouble();
    else if (text.startsWith("generate statistics "))
        statisticsSeconds += text.section(' ', 2, 2).toDouble();
}

/// Runs the program until `ended` says so, asked between its events.
void runProgram(const QStringList& arguments, const std::function<bool(TirnApplication&)>& ended,
                const std::function<void(TirnApplication&)>& begin = {})
{
    std::vector<QByteArray> bytes;
    for (const QString& argument : arguments)
        bytes.push_back(argument.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& argument : bytes)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    int argc = arguments.size();
    QSurfaceFormat::setDefaultFormat(surfaceFormat());
    TirnApplication application(argc, argv.data());
    if (!application.initializeGl() || application.currentWidget() == nullptr)
        return;
    QCoreApplication::postEvent(&application, new StartEvent);
    if (begin)
        begin(application);
    while (!ended(application))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
}

/// Prints when the window was shown and when the stack's first frame was, and what its parts took.
int startChild(const QString& stack)
{
    double shown = 0;
    double loaded = 0;
    int framesBefore = 0;
    runProgram({"tirn", stack}, [&](TirnApplication& application) {
        const double time = now();
        const QWindow* window = application.mainForm().windowHandle();
        if (shown == 0 && window != nullptr && window->isExposed())
            shown = time;
        const GLThread& thread = application.currentWidget()->renderThread();
        if (loaded == 0 && application.arrayCount() == 1) {
            loaded = time;
            framesBefore = thread.framesDrawn();
        }
        if (loaded == 0 || thread.framesDrawn() == framesBefore)
            return false;
        const EncodeTimes& encode = application.currentArray()->encodeTimes();
        std::printf("%.9f %.9f %.9f %.9f %.9f %.9f %.9f\n", shown, now(), readSeconds, statisticsSeconds,
                    encode.fill, encode.upload, now() - loaded);
        return true;
    });
    return 0;
}

QString writeStack(const QTemporaryDir& folder, int x, int y, std::int64_t layers, bool withHeader)
{
    QFile file(folder.filePath(withHeader ? "stack.pic" : "stack.raw"));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    if (withHeader) {
        QByteArray header(76, '\0');
        const int sizes[] = {x, y, static_cast<int>(layers)};
        for (int axis = 0; axis < 3; ++axis) {
            header[2 * axis] = static_cast<char>(sizes[axis] & 255);
            header[2 * axis + 1] = static_cast<char>(sizes[axis] >> 8);
        }
        header[14] = 1;
        header[54] = '9';
        header[55] = '0';
        file.write(header);
    }
    QByteArray layer(x * y, '\0');
    for (std::int64_t k = 0; k < layers; ++k) {
        for (int i = 0; i < layer.size(); ++i)
            layer[i] = static_cast<char>((i * 3 ^ i / x * 5) + static_cast<int>(k) * 7);
        if (file.write(layer) != layer.size())
            return {};
    }
    return file.fileName();
}

int measureStart(const QString& program, int repetitions)
{
    const QTemporaryDir folder;
    const QString stack = writeStack(folder, 512, 512, 64, true);
    const char* const names[] = {"window shown",          "first frame", "  reading",
                                 "  statistics",          "  filling",   "  driver",
                                 "  from volume to frame"};
    std::vector<std::vector<double>> columns(std::size(names));
    for (int i = 0; i <= repetitions; ++i) {
        const double begin = now();
        QProcess child;
        child.start(program, {"start-child", stack});
        child.waitForFinished(-1);
        const QStringList numbers = QString::fromLatin1(child.readAllStandardOutput()).trimmed().split(' ');
        // The first one only warms the machine up.
        if (i == 0 || numbers.size() != static_cast<int>(columns.size()))
            continue;
        for (int k = 0; k < numbers.size(); ++k)
            columns[static_cast<std::size_t>(k)].push_back(numbers[k].toDouble() - (k < 2 ? begin : 0));
    }
    for (std::size_t k = 0; k < columns.size(); ++k) {
        std::vector<double>& values = columns[k];
        std::sort(values.begin(), values.end());
        if (!values.empty())
            std::printf("%-24s %8.1f ms (%.1f to %.1f)\n", names[k], values[values.size() / 2] * 1000,
                        values.front() * 1000, values.back() * 1000);
    }
    return columns.front().empty() ? 1 : 0;
}

/// Loads a headerless stack of that size as the forms would, while a timer asks to be served as often as it
/// can be; prints the gaps between the times that it was.
int measureLoad(int megabytes, bool is3D)
{
    const QTemporaryDir folder;
    constexpr int side = 1024;
    const int layers = std::max(1, megabytes);
    const QString name = writeStack(folder, side, side, layers, false);
    if (name.isEmpty()) {
        std::fprintf(stderr, "no room for the stack\n");
        return 1;
    }
    std::vector<double> gaps;
    QTimer* timer = nullptr;
    Stopwatch gap;
    Stopwatch whole;
    double seconds = 0;
    bool isStarted = false;
    runProgram(
        {"tirn"},
        [&](TirnApplication& application) {
            if (!isStarted && application.mainForm().windowHandle()->isExposed()) {
                isStarted = true;
                LoadDescription load;
                load.filesToLoad = {{name}};
                load.setRaw(0, side, side, layers, 1, 8);
                load.textureTarget = is3D ? GL_TEXTURE_3D : GL_TEXTURE_2D;
                whole.restart();
                gap.restart();
                timer->start(1);
                application.loads().startLoad(std::move(load));
            }
            if (!isStarted || application.arrayCount() == 0)
                return false;
            seconds = whole.seconds();
            timer->stop();
            return true;
        },
        [&](TirnApplication& application) {
            timer = new QTimer(&application);
            QObject::connect(timer, &QTimer::timeout, timer, [&] { gaps.push_back(gap.restart()); });
        });
    if (gaps.empty())
        return 1;
    std::sort(gaps.begin(), gaps.end());
    const auto percentile = [&](double part) {
        return gaps[static_cast<std::size_t>(part * static_cast<double>(gaps.size() - 1))] * 1000;
    };
    std::printf("%d MB, %s textures: %.2f s (reading %.2f, statistics %.2f); %zu events, gap median %.1f ms, "
                "99th percentile %.1f ms, longest %.1f ms\n",
                layers, is3D ? "3D" : "2D", seconds, readSeconds, statisticsSeconds, gaps.size(),
                percentile(0.5), percentile(0.99), gaps.back() * 1000);
    return 0;
}

#ifdef TIRN_HAS_PLOTS

/// From what asks for a frame to the end of its swap.
double secondsToFrame(TirnApplication& application, const std::function<void()>& ask)
{
    GLThread& thread = application.currentWidget()->renderThread();
    thread.wait();
    QCoreApplication::processEvents();
    const int before = thread.framesDrawn();
    const Stopwatch timer;
    ask();
    while (thread.framesDrawn() == before)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    return timer.seconds();
}

double median(std::vector<double>& values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Moves of a stroke of the alpha curve, and as many plain frames between them.
void strokeAndPrint(TirnApplication& application, PaletteForm& form, int edits)
{
    PalettePlot& plot = form.page().plot();
    form.page().editBox(3).click();
    const auto send = [&](QEvent::Type type, int x, Qt::MouseButton button) {
        const QPoint at = plot.placeOf({x, 20 + x % 200});
        QMouseEvent event(type, at, button, Qt::LeftButton, {});
        QCoreApplication::sendEvent(plot.canvas(), &event);
    };
    const int size = form.currentPalette()->size();
    std::vector<double> plain;
    std::vector<double> edited;
    std::vector<double> handled;
    send(QEvent::MouseButtonPress, size / 4, Qt::LeftButton);
    for (int i = 0; i < edits; ++i) {
        const int x = size / 4 + size / 30 * (i % 15);
        plain.push_back(secondsToFrame(application, [&] { application.currentWidget()->requestFrame(); }));
        edited.push_back(secondsToFrame(application, [&] {
            const Stopwatch timer;
            send(QEvent::MouseMove, x, Qt::NoButton);
            handled.push_back(timer.seconds());
        }));
    }
    send(QEvent::MouseButtonRelease, size / 4, Qt::LeftButton);
    const double plainFrame = median(plain) * 1000;
    const double editedFrame = median(edited) * 1000;
    std::printf("%2d-bit palette: plain frame %.2f ms, edit to frame %.2f ms, difference %.2f ms, "
                "of which until the frame was asked for %.2f ms\n",
                form.currentPalette()->depth(), plainFrame, editedFrame, editedFrame - plainFrame,
                median(handled) * 1000);
}

int measureEdits(int edits)
{
    const QTemporaryDir folder;
    const QString stack = writeStack(folder, 128, 128, 32, true);
    runProgram({"tirn", stack}, [&](TirnApplication& application) {
        if (application.arrayCount() == 0 || application.currentWidget()->renderThread().framesDrawn() == 0)
            return false;
        auto& form = static_cast<PaletteForm&>(*application.forms().create(FormId::Palette, true));
        QCoreApplication::processEvents();
        strokeAndPrint(application, form, edits);
        // Without a stack of 12 bits a deep palette comes from a file or, as here, from a list.
        PaletteList deep;
        deep.push_back(std::make_unique<Palette>("deep", 12, application.paletteTables()));
        application.stacks().addPalettes(std::move(deep));
        application.model().edit(Change::Channels, [](Scene& scene) {
            scene.current()->channels().front().display.palette = static_cast<int>(scene.palettes.size()) - 1;
        });
        form.changeSelectedPalette(static_cast<int>(application.scene().palettes.size()) - 1);
        strokeAndPrint(application, form, edits);
        return true;
    });
    return 0;
}

#endif

} // namespace
} // namespace tirn::bench

int main(int argc, char** argv)
{
    using namespace tirn::bench;
    qInstallMessageHandler(takeTimes);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    const QString what = QString::fromLocal8Bit(argc > 1 ? argv[1] : "");
    const auto argument = [&](int index, int otherwise) {
        return argc > index ? QByteArray(argv[index]).toInt() : otherwise;
    };
    if (what == "start-child")
        return startChild(QString::fromLocal8Bit(argc > 2 ? argv[2] : ""));
    if (what == "start")
        return measureStart(QString::fromLocal8Bit(argv[0]), argument(2, 9));
    if (what == "load")
        return measureLoad(argument(2, 512), argument(3, 2) == 3);
#ifdef TIRN_HAS_PLOTS
    if (what == "edit")
        return measureEdits(argument(2, 200));
#endif
    std::fprintf(stderr, "Usage: %s start [repetitions] | load [megabytes] [2|3] | edit [edits]\n", argv[0]);
    return 2;
}
