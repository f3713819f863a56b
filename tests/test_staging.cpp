// What a file that ends early reads past its end. Crack Art and MacPaint
// decode from srcbytes and so read on into the bytes the file before left
// there; every other decoder reads zeros, whatever the staging arrays hold
// from the picture before. Either way the short file decodes as the whole
// file those bytes complete it to.
#include "support.h"

using vtest::Bytes;

namespace {

TEST(Staging, AShortFileReadsZerosOrTheBytesTheFileBeforeLeft) {
    const std::pair<const char*, std::size_t> cases[] = {
        {"NEO", 32128}, {"PI2", 32034}, {"PC1", 32034}, {"PC2", 30000}, {"PC3", 24000}, {"TNY", 20000},
        {"SPC", 30000}, {"SPS", 38000}, {"CA1", 34000}, {"CA2", 34000}, {"CA3", 34000}, {"MAC", 40000}};
    for (const auto& [ext, size] : cases) {
        Bytes before = vtest::randomBytes(size, 1), file = vtest::randomBytes(size, 2);
        before[0] = file[0] = 1;  // a Tiny resolution byte
        const bool readsOn = ext[0] == 'C' || ext[0] == 'M';  // Crack Art and MacPaint
        for (const std::size_t cut : {std::size_t(0), 1ul, 40ul, 700ul, size / 2}) {
            Bytes completed = readsOn ? before : Bytes(size, 0);
            std::copy_n(file.begin(), cut, completed.begin());
            const auto afterCut = vtest::freshStaging(), afterCompleted = vtest::freshStaging();
            vtest::decodeAs(*afterCut, before, ext);
            vtest::decodeAs(*afterCompleted, before, ext);
            const Bytes cutFile(file.begin(), file.begin() + std::ptrdiff_t(cut));
            EXPECT_EQ(vtest::bytesOf(vtest::decodeAs(*afterCut, cutFile, ext).bitmap),
                      vtest::bytesOf(vtest::decodeAs(*afterCompleted, completed, ext).bitmap))
                << ext << " cut at " << cut;
        }
    }
}

}  // namespace
