// The library's converter lists as the tests walk them: every converter of a
// pair of formats and every other form of one, with its formats and the AVX2
// form it hands over to.
#pragma once

#include <string>
#include <vector>

#include "frame/converters.h"
#include "frame/formats.h"
#include "support/frames.h"

namespace cycbcr_test {

using cycbcr::Format;

struct Listed {
    std::string name;
    Converter fn;
    Converter avx2;  // the form taken at level 5, or null
    Format from, to;
    bool pair;  // the pair's own converter (else an _avx2 or _opt form)
    bool avx2_form() const { return name.ends_with("_avx2"); }
};

inline const std::vector<Listed>& listed_converters() {
    static const std::vector<Listed> all = [] {
        std::vector<Listed> out;
        for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows)
            out.push_back({r.name, r.fn, r.avx2, r.from, r.to, r.pair});
        return out;
    }();
    return all;
}

// The listed converters between formats `pred` accepts.
template <class Pred>
std::vector<Listed> listed_where(Pred pred) {
    std::vector<Listed> out;
    for (const Listed& l : listed_converters())
        if (pred(l)) out.push_back(l);
    return out;
}

inline void PrintTo(const Listed& l, std::ostream* os) {
    *os << l.name;
}

// Test names without the common prefix.
inline std::string short_name(const std::string& name) {
    return name.starts_with("cycbcr_") ? name.substr(7) : name;
}

}  // namespace cycbcr_test
