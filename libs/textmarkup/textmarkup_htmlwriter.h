#pragma once

#include "textmarkup_attributes.h"

#include <string>
#include <string_view>
#include <vector>

namespace textmarkup {

/// Writes an HTML document, or a piece of one, in which no text becomes markup.
///
///     HtmlWriter page;
///     page.doctype();
///     page.open("html", {{"lang", "en"}});
///     page.element("p", message, {{"class", "message"}});
///     file.write(page.finish());
///
/// Texts are escaped, with U+FFFD for bytes that are no UTF-8 and for control characters
/// but tab, line feed and carriage return. A name that is none gets '_' for each
/// character but ASCII letters, digits and "-_.:", and an 'x' in front where no letter
/// comes first. Void elements such as `br` are open for no time: no `close` belongs to
/// them. Which elements may stand in which is left to the caller.
class HtmlWriter {
public:
    /// `<!DOCTYPE html>`, which only stands before all else.
    void doctype();

    /// Of attributes with the same name the first is written.
    void open(std::string_view name, const Attributes& attributes = {});
    void close();

    /// Opens, writes the text and closes.
    void element(std::string_view name, std::string_view text, const Attributes& attributes = {});

    /// In `script`, `style` and other raw text, where nothing can be escaped, the text is
    /// code of the page's author: bytes and characters are replaced as above, and what
    /// would end the element or begin a comment (`</script`, `<script`, `<!--`) gets a
    /// backslash behind the '<', which means the same within strings.
    void text(std::string_view text);

    /// Hyphens in a row are parted by blanks.
    void comment(std::string_view text);

    /// Closes what is open and hands over the text; the writer is as new.
    std::string finish();

private:
    std::string d_text;
    std::vector<std::string> d_open;
};

} // namespace textmarkup
