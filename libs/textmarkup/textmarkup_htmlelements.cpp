#include "internal/textmarkup_htmlelements.h"

#include <algorithm>
#include <iterator>

namespace textmarkup {
namespace {

/// Whether a list of names, each between blanks, has this one.
constexpr bool has(std::string_view names, std::string_view name) {
    for (size_t at = names.find(name); at != std::string_view::npos;
         at = names.find(name, at + 1)) {
        if (at > 0 && names[at - 1] == ' ' && names.substr(at + name.size()).starts_with(' '))
            return !name.empty();
    }
    return false;
}

constexpr std::string_view kVoid = " area base basefont bgsound br col embed frame hr img input "
                                   "keygen link meta param source track wbr ";
constexpr std::string_view kRaw = " iframe noembed noframes style xmp ";
constexpr std::string_view kParagraphEnders =
    " address article aside blockquote center dd details dialog dir div dl dt fieldset figcaption "
    "figure footer form h1 h2 h3 h4 h5 h6 header hgroup hr li listing main menu nav ol p "
    "plaintext pre search section summary table ul xmp ";
constexpr std::string_view kTableParts = " caption colgroup table tbody td tfoot th thead tr ";
constexpr std::string_view kAroundTables = " html table template ";
constexpr std::string_view kAroundOthers =
    " applet caption html marquee object table td template th ";

/// Which elements end at which start tags, and what prevents it.
struct Rule {
    std::string_view starting;
    std::string_view ended;
    std::string_view shields;
};
constexpr Rule kRules[] = {
    {kParagraphEnders, " p ", " button "},
    {" li ", " li ", " dir menu ol ul "},
    {" dd dt ", " dd dt ", " dl "},
    {" option ", " option ", " select "},
    {" optgroup ", " optgroup option ", " select "},
    {" td th ", " td th ", " tr "},
    {" tr ", " caption colgroup tr ", ""},
    {" tbody tfoot thead ", " caption colgroup tbody tfoot thead tr ", ""},
};

bool shieldsScope(std::string_view open, std::string_view other) {
    return has(has(kTableParts, other) ? kAroundTables : kAroundOthers, open);
}

} // namespace

bool isVoidElement(std::string_view name) { return has(kVoid, name); }

HtmlContent contentOf(std::string_view name) {
    if (name == "script")
        return HtmlContent::Script;
    if (name == "title" || name == "textarea")
        return HtmlContent::References;
    if (name == "plaintext")
        return HtmlContent::Rest;
    return has(kRaw, name) ? HtmlContent::Raw : HtmlContent::Markup;
}

bool dropsFirstLineFeed(std::string_view name) { return has(" listing pre textarea ", name); }

bool endsBefore(std::string_view open, std::string_view starting) {
    return std::ranges::any_of(kRules, [&](const Rule& rule) {
        return has(rule.starting, starting) && has(rule.ended, open);
    });
}

bool shieldsBefore(std::string_view open, std::string_view starting) {
    return shieldsScope(open, starting) || std::ranges::any_of(kRules, [&](const Rule& rule) {
               return has(rule.starting, starting) && has(rule.shields, open);
           });
}

bool shieldsFromEndTag(std::string_view open, std::string_view ending) {
    return shieldsScope(open, ending);
}

} // namespace textmarkup
