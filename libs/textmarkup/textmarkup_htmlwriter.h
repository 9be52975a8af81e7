#pragma once

#include "textmarkup_attributes.h"

#include <string>
#include <string_view>
#include <vector>

namespace textmarkup {

/// Writes an HTML document, or a part of one, in which no text can become markup.
///
///     HtmlWriter page;
///     page.doctype();
///     page.open("html", {{"lang", "en"}});
///     page.element("p", message, {{"class", "message"}});
///     file.write(page.finish());
///
/// Texts are escaped; invalid UTF-8 and control characters, except tab, line feed and
/// carriage return, become U+FFFD. In an invalid name each character other than ASCII
/// letters, digits and "-_.:" becomes '_', and an 'x' is put in front if it does not begin
/// with a letter. Void elements such as `br` are closed at once: do not call `close` for
/// them. Which elements may contain which is up to the caller.
class HtmlWriter {
public:
    /// `<!DOCTYPE html>`; only at the very beginning.
    void doctype();

    /// Of attributes with the same name, the first is written.
    void open(std::string_view name, const Attributes& attributes = {});
    void close();

    /// Opens, writes the text and closes.
    void element(std::string_view name, std::string_view text, const Attributes& attributes = {});

    /// In `script`, `style` and other raw text, where nothing can be escaped, the text is
    /// code by the page's author: bytes and characters are replaced as above, and what
    /// would end the element or begin a comment (`</script`, `<script`, `<!--`) gets a
    /// backslash after the '<', which does not change its meaning inside strings.
    void text(std::string_view text);

    /// Hyphens in a row are separated by blanks.
    void comment(std::string_view text);

    /// Closes what is open and returns the text; the writer is then as new.
    std::string finish();

private:
    std::string d_text;
    std::vector<std::string> d_open;
};

} // namespace textmarkup
