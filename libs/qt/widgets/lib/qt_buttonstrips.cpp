#include "qt_buttonstrips.h"

#include <QCoreApplication>

namespace QT_ButtonStrips {
namespace {

constexpr const char* kContext = "QT_ButtonStrip";

constexpr const char* kReview[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Home"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Play backwards"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Step backwards"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Pause"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Step forwards"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Play forwards"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Goto time")};
constexpr const char* kTagStart[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Tag start"),
                                     QT_TRANSLATE_NOOP("QT_ButtonStrip", "Goto start tag")};
constexpr const char* kTagEnd[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Goto end tag"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Tag end"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Clear tags"),
                                   QT_TRANSLATE_NOOP("QT_ButtonStrip", "Archive tagged region")};
constexpr const char* kLive[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Live")};
constexpr const char* kPreview[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Play"),
                                    QT_TRANSLATE_NOOP("QT_ButtonStrip", "Pause"),
                                    QT_TRANSLATE_NOOP("QT_ButtonStrip", "Step")};
constexpr const char* kPlayMode[] = {QT_TRANSLATE_NOOP("QT_ButtonStrip", "Loop"),
                                     QT_TRANSLATE_NOOP("QT_ButtonStrip", "Play once"),
                                     QT_TRANSLATE_NOOP("QT_ButtonStrip", "Play all")};
constexpr const char* kListNav[] = {
    QT_TRANSLATE_NOOP("QT_ButtonStrip", "First"), QT_TRANSLATE_NOOP("QT_ButtonStrip", "Previous"),
    QT_TRANSLATE_NOOP("QT_ButtonStrip", "Next"), QT_TRANSLATE_NOOP("QT_ButtonStrip", "Last")};

constexpr Definition kDefinitions[] = {
    {"review.but", kReview},   {"tag_start.but", kTagStart}, {"tag_end.but", kTagEnd},
    {"live.but", kLive},       {"preview.but", kPreview},    {"playmode.but", kPlayMode},
    {"listnav.but", kListNav},
};

} // namespace

QStringList Definition::toolTips() const {
    QStringList translated;
    for (const char* text : texts)
        translated << QCoreApplication::translate(kContext, text);
    return translated;
}

const Definition& definition(Strip strip) { return kDefinitions[strip]; }

std::span<const Definition> definitions() { return kDefinitions; }

} // namespace QT_ButtonStrips
