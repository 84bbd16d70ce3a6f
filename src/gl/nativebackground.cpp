#include "gl/nativebackground.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

#include <QColor>
#include <QGuiApplication>
#include <QWidget>
#include <xcb/xcb.h>

namespace tirn {

void setNativeBackground(QWidget& widget, const QColor& colour)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> server(xcb_connect(nullptr, nullptr),
                                                                              &xcb_disconnect);
    if (xcb_connection_has_error(server.get()) != 0)
        return;
    // Red, green and blue lie in a pixel as they do here, on all screens of today.
    const std::uint32_t pixel = colour.rgb() & 0xffffffU;
    const auto window = static_cast<xcb_window_t>(widget.winId());
    const xcb_void_cookie_t cookie =
        xcb_change_window_attributes_checked(server.get(), window, XCB_CW_BACK_PIXEL, &pixel);
    std::free(xcb_request_check(server.get(), cookie));
}

} // namespace tirn
