#include "core_varargs.h"
#include "utl_inireader.h"

#include <cstdio>
#include <string>
#include <string_view>

int main() {
    constexpr std::string_view kText = "[NVR]\nPort 80\n";
    utl::IniReader reader;
    std::string port;
    if (!reader.parse(kText.data(), kText.size()) || !reader.get("NVR", "Port", port))
        return 1;
    std::puts(core::format("Port %s", port).c_str());
    return 0;
}
