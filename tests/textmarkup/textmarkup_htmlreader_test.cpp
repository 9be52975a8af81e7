#include "textmarkup_htmlreader.h"

#include "expect_traces.h"
#include "markup_traces.h"

#include <gtest/gtest.h>

namespace {

TEST(HtmlReader, ReadsAsBrowsersDo) {
    const Traces rows = {
        {"\uFEFF<!DocType html>\r\n<P CLASS=a>1<p>2</P>\r",
         "<!html>[\n]<p class=\"a\">[1]</p><p>[2]</p>[\n]"},
        {"<a b c=1 d = '2' e=\"3'\" B=4 =f g=/>x",
         "<a b=\"\" c=\"1\" d=\"2\" e=\"3'\" =f=\"\" g=\"/\">[x]</a>"},
        {"<a/b/ c=>x", "<a b=\"\" c=\"\">[x]</a>"},
        {"<br>1<br/>2</br>3<img src=x>",
         "<br></br>[1]<br></br>[2]<br></br>[3]<img src=\"x\"></img>"},
        // Raw text, and text in which only references are special.
        {"<style>a<b>&amp;</styles></STYLE >x", "<style>[a<b>&amp;</styles>]</style>[x]"},
        {"<title>a<b>&amp;</title>x", "<title>[a<b>&]</title>[x]"},
        {"<script>1<!--<script></script>2</script>", "<script>[1<!--<script></script>2]</script>"},
        {"<script><!--></script>1", "<script>[<!-->]</script>[1]"},
        {"<script>1</script", "<script>[1</script]</script>"},
        {"<textarea>\r\n\n1</textarea><pre>\n2", "<textarea>[\n1]</textarea><pre>[2]</pre>"},
        {"<plaintext>1</plaintext>", "<plaintext>[1</plaintext>]</plaintext>"},
        // What looks like markup.
        {"1 < 2 <3 </ <", "[1 < 2 <3 ]<!-- <-->"},
        {"</><!---->1<!-->2<!--->3<!--a--!>4<!--b",
         "<!---->[1]<!---->[2]<!---->[3]<!--a-->[4]<!--b-->"},
        {"<!--a--", "<!--a-->"},
        {"<!x><?y?></3 z>", "<!--x--><!--?y?--><!--3 z-->"},
        {"1<a b='", "[1]"},
        // References.
        {"&lt;&LT&amp;amp&notit;&notin;&nosuch;&", "[<<&amp¬it;∉&nosuch;&]"},
        {"&#65;&#x42&#X43;&#0;&#xD800;&#x110000;&#128;&#;&#x;", "[ABC\uFFFD\uFFFD\uFFFD€&#;&#x;]"},
        {"<a b='&copy=1&copy2&copy;&copy' c=&lt>", "<a b=\"&copy=1&copy2©©\" c=\"<\"></a>"},
        {std::string("\0\xFF"
                     "é\r\n\r",
                     7),
         "[\uFFFD\uFFFDé\n\n]"},
        // Where elements end.
        {"<ul><li>1<ul><li>2</ul><li>3</ul>4",
         "<ul><li>[1]<ul><li>[2]</li></ul></li><li>[3]</li></ul>[4]"},
        {"<table><tr><td>1<p>2<td>3<tr><th>4<tbody><tr></table>",
         "<table><tr><td>[1]<p>[2]</p></td><td>[3]</td></tr><tr><th>[4]</th></tr><tbody><tr></"
         "tr></"
         "tbody></table>"},
        {"<div><table><td></div>1</table></div>", "<div><table><td>[1]</td></table></div>"},
        {"<dl><dt>1<dd>2<dt>3</dl><select><option>1<option>2</select>",
         "<dl><dt>[1]</dt><dd>[2]</dd><dt>[3]</dt></dl><select><option>[1]</"
         "option><option>[2]</"
         "option></select>"},
        {"<b><i>1</b>2</i></p>", "<b><i>[1]</i></b>[2]<p></p>"},
        {"<svg><path/><a/></svg><a/>1", "<svg><path></path><a></a></svg><a>[1]</a>"},
    };
    expectTraces(test::traceHtml, rows);
}

TEST(HtmlReader, KeepsToItsLimits) {
    const textmarkup::Limits limits{.depth = 2, .text = 8, .attributes = 1};
    const Traces rows = {
        {"<i><b><u>1</u></b>", "<i><b></b><u>[1]</u></i>"},
        {"<a b=1 c=2>", "<a b=\"1\"></a>"},
        {"0123456789&amp;1", "[01234567][89][&][1]"},
        {"<i b='0123456789'><!--0123456789-->", "<i b=\"01234567\"><!--01234567--></i>"},
        {"<0123456789>1", "[<0123456][789>1]"},
        {"<a123456789>1", "<a1234567>[1]</a1234567>"},
    };
    expectTraces(test::traceHtml, rows, limits);
}

} // namespace
