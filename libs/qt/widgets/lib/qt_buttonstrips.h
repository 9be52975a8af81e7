#pragma once

#include <QStringList>

#include <span>

/// The strips that the toolkit's users share: the name of each one's picture file and
/// what its buttons say. Pictures are the application's own.
///
///     strip->setButtonToolTips(QT_ButtonStrips::definition(QT_ButtonStrips::Live).toolTips());
namespace QT_ButtonStrips {

/// The strips that applications share.
enum Strip { Review, TagStart, TagEnd, Live, Preview, PlayMode, ListNav };

/// What a strip is made of.
struct Definition {
    const char* file;                   ///< of its picture
    std::span<const char* const> texts; ///< untranslated, in strip order

    /// The texts in the language of the application, by the context "QT_ButtonStrip".
    QStringList toolTips() const;
};

/// Of one of them.
const Definition& definition(Strip strip);

/// All of them, in the order of Strip.
std::span<const Definition> definitions();

} // namespace QT_ButtonStrips
