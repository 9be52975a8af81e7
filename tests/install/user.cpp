#include "core_varargs.h"
#include "qt_iconfactory.h"
#include "qt_widgetbuilder.h"
#include "utl_inireader.h"

#include <cstdio>
#include <string_view>

static_assert(sizeof(NS_QT::WidgetBuilder) > 0);
static_assert(QT_IconFactory::Tick == 1);

int main() {
    constexpr std::string_view kText = "[NVR]\nPort 80\n";
    utl::IniReader reader;
    std::string port;
    if (!reader.parse(kText.data(), kText.size()) || !reader.get("NVR", "Port", port))
        return 1;
    std::puts(core::format("Port %s", port).c_str());
    return 0;
}
