// velmoric-convert: the viewer's decoders on the command line.
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "convert/convert.h"
#include "platform/files.h"

namespace {

// Standard output and error, written straight to their descriptors.
class StandardConsole : public velmoric::Console {
public:
    void out(std::string_view text) override { writeAll(1, text); }
    void err(std::string_view text) override { writeAll(2, text); }
    bool errIsTerminal() const override { return terminal_; }

private:
    static void writeAll(int fd, std::string_view text) {
        while (!text.empty()) {
            const ssize_t n = ::write(fd, text.data(), text.size());
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            text.remove_prefix(std::size_t(n));
        }
    }
    bool terminal_ = velmoric::files::isTerminal(2);
};

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    StandardConsole console;
    return velmoric::runConvert(args, console);
}
