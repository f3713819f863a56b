#include "options/association.h"

#include "formats/formats.h"

namespace velmoric {

Association buildAssociation(const std::string& folder) {
    Association a;
    a.className = "velmoric";
    a.comment = "Velmoric file";
    a.command = joinPath(folder, "velmoric") + " %f";
    auto add = [&](const Format& f) {
        std::vector<ContentMatch> matches;
        for (const Signature& sig : f.signatures) matches.push_back({sig.offset, std::string(sig.bytes)});
        a.types.push_back({std::string(f.lower), std::string(f.mimeType), typeComment(f), std::move(matches)});
    };
    // .spu first: its registration is what later starts test for.
    for (const Format& f : formatTable())
        if (f.lower == kFirstRunExtension) add(f);
    for (const Format& f : formatTable())
        if (f.lower != kFirstRunExtension) add(f);
    return a;
}

}  // namespace velmoric
