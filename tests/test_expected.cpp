// Every file of the shared corpus and of the synthetic set, decoded by the
// converter, against the outcome, bitmap hash, kind and caption that an
// independent decoder of the same rules gives for it from a fresh state.
#include <openssl/evp.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "support.h"
#include "convert/convert.h"

namespace {

namespace fs = std::filesystem;

std::string sha256Hex(const std::vector<std::uint8_t>& bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr);
    std::string out(2 * length, '0');
    for (unsigned i = 0; i < length; ++i) std::snprintf(&out[2 * i], 3, "%02x", digest[i]);
    return out;
}

// What differs between a decode and its row (file, bytes, outcome, sha256,
// kind, caption), or empty when nothing does.
std::string difference(const std::vector<std::string>& row, const velmoric::FileDecode& d) {
    const std::string outcome = d.ok ? "picture" : "rejected";
    if (outcome != row[2]) return "outcome " + outcome + " (" + d.reason + "), expected " + row[2];
    if (!d.ok) return {};
    std::string why;
    if (sha256Hex(d.bitmap) != row[3]) why += " bitmap hash";
    if (std::to_string(d.kind) != row[4]) why += " kind " + std::to_string(d.kind) + " != " + row[4];
    if (d.caption != row[5]) why += " caption '" + d.caption + "' != '" + row[5] + "'";
    return why;
}

// Each table twice: every file from a fresh state, and every file through
// one staging block that the converter reuses and clears between files. A
// reused decode that differs from the fresh one names the first byte that
// does; a fresh one that differs from the table (which holds only hashes) is
// written to expected-mismatch/ in the test's folder, to be looked at.
TEST(ExpectedBitmaps, EveryFileOfBothTablesFreshAndThroughOneReusedStagingBlock) {
    const fs::path shared = vtest::corpusDir().parent_path();
    for (const auto& [folder, tsv] : {std::pair{shared / "corpus", shared / "expected/corpus.tsv"},
                                      {shared / "synthetic", shared / "synthetic/EXPECTED.tsv"}}) {
        if (!fs::exists(tsv)) GTEST_SKIP() << "no " << tsv;
        std::ifstream in(tsv);
        std::string line;
        std::getline(in, line);  // the column names
        velmoric::FreshStaging staging;
        int rows = 0, differing = 0;
        while (std::getline(in, line)) {
            std::vector<std::string> row;
            std::stringstream cols(line);
            for (std::string col; std::getline(cols, col, '\t');) row.push_back(col);
            row.resize(6);
            const std::string path = (folder / row[0]).string();
            const auto fresh = velmoric::decodeFile(path), reused = staging.decode(path);
            std::string why = difference(row, fresh);
            if (why.find("bitmap hash") != std::string::npos) {
                const fs::path kept = fs::path("expected-mismatch") / (row[0] + ".bmp");
                fs::create_directories(kept.parent_path());
                vtest::writeFile(kept.string(), fresh.bitmap);
                why += " (the bitmap is in " + kept.string() + ")";
            }
            if (const std::string again = difference(row, reused); !again.empty()) {
                why += (why.empty() ? " reused staging:" : "; reused staging:") + again;
                // The offset in the bitmap file where the two part.
                const auto& f = fresh.bitmap;
                const auto at = std::mismatch(f.begin(), f.end(), reused.bitmap.begin(), reused.bitmap.end()).first;
                if (fresh.ok && reused.ok) why += ", against the fresh decode from byte " + std::to_string(at - f.begin());
            }
            ++rows;
            if (!why.empty()) ADD_FAILURE() << row[0] << ":" << why;
            differing += !why.empty();
        }
        EXPECT_GT(rows, 0) << tsv;
        EXPECT_EQ(differing, 0) << differing << " of " << rows << " files differ in " << tsv;
    }
}

}  // namespace
