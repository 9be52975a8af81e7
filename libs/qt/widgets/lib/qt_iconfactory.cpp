#include "qt_iconfactory.h"

#include <iterator>

namespace {

constexpr QT_IconFactory::IconType kAll[] = {
#define QT_ICON_TYPE(name, value) QT_IconFactory::name,
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
};
static_assert(std::size(kAll) == 617);

core::EnumNames makeTypeNames() {
    return core::EnumNames("IconType", 0, "Unknown").reserve(std::size(kAll))
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
