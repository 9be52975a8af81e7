#pragma once

#include "core_wrapper.h"
#include "temp_folder.h"

#include <cstdio>
#include <string>

namespace fuzz {

/// A text as a file to read; only one at a time.
class TextFile {
public:
    explicit TextFile(const std::string& text) {
        static const test::TempFolder folder;
        test::writeFile(folder / "text", text);
        d_file = core::Wrapper::fopen(folder / "text", "rb");
    }
    ~TextFile() { std::fclose(d_file); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    FILE* get() { return d_file; }

private:
    FILE* d_file;
};

} // namespace fuzz
