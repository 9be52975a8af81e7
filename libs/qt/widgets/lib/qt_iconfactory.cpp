#include "qt_iconfactory.h"

namespace {

constexpr int kIconTypes = 0
#define QT_ICON_TYPE(name, value) +1
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
    ;
static_assert(kIconTypes == 617);

core::EnumNames makeTypeNames() {
    return core::EnumNames("IconType", 0, "Unknown").reserve(kIconTypes)
#define QT_ICON_TYPE(name, value) .add("QT_IconFactory::" #name, QT_IconFactory::name)
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
        ;
}

// Makes the table before main runs, whoever asks for it first.
[[maybe_unused]] const core::EnumNames& builtAtStart = QT_IconFactory::typeNames();

} // namespace

const core::EnumNames& QT_IconFactory::typeNames() {
    static const core::EnumNames names = makeTypeNames();
    return names;
}
