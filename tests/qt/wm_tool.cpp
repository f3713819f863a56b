// velmoric_wm_tool: what a user and a pager do to a window under a real X
// server and window manager, for the window-manager tests.
//   wait-wm                        waits up to 5 s for a window manager
//   find TITLE                     waits up to 5 s for a window; prints its id
//   size ID                        prints the window's size: WIDTHxHEIGHT
//   maximise ID on|off             asks the window manager, as a pager does
//   compare SCREEN REF SCALE X Y   whether REF, every pixel SCALE by SCALE
//                                  device pixels, stands in SCREEN with its
//                                  top left corner within 3 pixels of X, Y
// Exit 0 on success, 1 on failure, 2 on bad usage.
#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QImage>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

xcb_atom_t atom(xcb_connection_t* c, const char* name) {
    xcb_intern_atom_reply_t* r = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
    const xcb_atom_t a = r ? r->atom : XCB_ATOM_NONE;
    std::free(r);
    return a;
}

bool wmRuns(xcb_connection_t* c, xcb_window_t root) {
    const xcb_get_property_cookie_t ck = xcb_get_property(c, 0, root, atom(c, "_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 0, 1);
    xcb_get_property_reply_t* r = xcb_get_property_reply(c, ck, nullptr);
    const bool runs = r && xcb_get_property_value_length(r) == 4;
    std::free(r);
    return runs;
}

std::string title(xcb_connection_t* c, xcb_window_t w) {
    xcb_get_property_reply_t* r =
        xcb_get_property_reply(c, xcb_get_property(c, 0, w, atom(c, "_NET_WM_NAME"), XCB_GET_PROPERTY_TYPE_ANY, 0, 256), nullptr);
    std::string t = r ? std::string(static_cast<const char*>(xcb_get_property_value(r)), std::size_t(xcb_get_property_value_length(r))) : "";
    std::free(r);
    return t;
}

// Depth first through the tree below `w`.
xcb_window_t findTitle(xcb_connection_t* c, xcb_window_t w, const std::string& wanted) {
    if (title(c, w) == wanted) return w;
    xcb_query_tree_reply_t* tree = xcb_query_tree_reply(c, xcb_query_tree(c, w), nullptr);
    xcb_window_t found = XCB_WINDOW_NONE;
    if (tree) {
        const xcb_window_t* children = xcb_query_tree_children(tree);
        for (int i = 0; i < xcb_query_tree_children_length(tree) && found == XCB_WINDOW_NONE; ++i)
            found = findTitle(c, children[i], wanted);
        std::free(tree);
    }
    return found;
}

template <class Test>
bool waitFor(Test test) {
    for (int i = 0; i < 50; ++i) {
        if (test()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

int compare(int argc, char** argv) {
    if (argc != 7) return 2;
    int one = 1;
    QGuiApplication app(one, argv);
    const QImage screen = QImage(QString::fromLocal8Bit(argv[2])).convertToFormat(QImage::Format_RGB32);
    const QImage ref = QImage(QString::fromLocal8Bit(argv[3])).convertToFormat(QImage::Format_RGB32);
    const int scale = std::atoi(argv[4]), x0 = std::atoi(argv[5]), y0 = std::atoi(argv[6]);
    if (screen.isNull() || ref.isNull() || scale < 1) return 2;
    for (int dy = -3; dy <= 3; ++dy)
        for (int dx = -3; dx <= 3; ++dx) {
            const int left = x0 + dx, top = y0 + dy;
            if (left < 0 || top < 0 || left + ref.width() * scale > screen.width() ||
                top + ref.height() * scale > screen.height())
                continue;
            bool same = true;
            for (int y = 0; y < ref.height() * scale && same; ++y)
                for (int x = 0; x < ref.width() * scale && same; ++x)
                    same = ((screen.pixel(left + x, top + y) ^ ref.pixel(x / scale, y / scale)) & 0xFFFFFF) == 0;
            if (same) {
                std::printf("the picture stands at %d,%d, %d device pixels to a picture pixel\n", left, top, scale);
                return 0;
            }
        }
    std::fprintf(stderr, "the picture, %d by %d device pixels a pixel, is nowhere near %d,%d\n", scale, scale, x0, y0);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::string what = argv[1];
    if (what == "compare") return compare(argc, argv);
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c)) return 1;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    if (what == "wait-wm") return waitFor([&] { return wmRuns(c, root); }) ? 0 : 1;
    if (what == "find" && argc == 3) {
        xcb_window_t w = XCB_WINDOW_NONE;
        if (!waitFor([&] { return (w = findTitle(c, root, argv[2])) != XCB_WINDOW_NONE; })) return 1;
        std::printf("%u\n", w);
        return 0;
    }
    if (argc != 3 && argc != 4) return 2;
    const xcb_window_t w = xcb_window_t(std::strtoul(argv[2], nullptr, 0));
    if (what == "size") {
        xcb_get_geometry_reply_t* g = xcb_get_geometry_reply(c, xcb_get_geometry(c, w), nullptr);
        if (!g) return 1;
        std::printf("%dx%d\n", g->width, g->height);
        std::free(g);
        return 0;
    }
    if (what == "maximise" && argc == 4) {
        xcb_client_message_event_t e{};
        e.response_type = XCB_CLIENT_MESSAGE;
        e.format = 32;
        e.window = w;
        e.type = atom(c, "_NET_WM_STATE");
        e.data.data32[0] = std::strcmp(argv[3], "on") == 0 ? 1 : 0;  // add or remove
        e.data.data32[1] = atom(c, "_NET_WM_STATE_MAXIMIZED_VERT");
        e.data.data32[2] = atom(c, "_NET_WM_STATE_MAXIMIZED_HORZ");
        e.data.data32[3] = 2;  // from a pager, on behalf of the user
        const xcb_void_cookie_t ck = xcb_send_event_checked(
            c, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
            reinterpret_cast<const char*>(&e));
        xcb_generic_error_t* error = xcb_request_check(c, ck);
        std::free(error);
        return error ? 1 : 0;
    }
    return 2;
}
