#pragma once

#include <string>

namespace test {

/// What an element without structure holds, as it is written; empty where there is none.
inline std::string elementText(const std::string& document, const std::string& name) {
    const size_t start = document.find("<" + name + ">");
    const size_t end = document.find("</" + name + ">");
    return end == std::string::npos
               ? ""
               : document.substr(start + name.size() + 2, end - start - name.size() - 2);
}

} // namespace test
