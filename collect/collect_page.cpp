#include "collect_page.h"

#include "collect_lines.h"
#include "collect_pagetext.h"
#include "core_varargs.h"
#include "textmarkup_htmlwriter.h"
#include "utf_character.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <vector>

namespace collect {
namespace {

using textmarkup::HtmlWriter;

constexpr size_t kMaxSites = 500;     // more are counted only
constexpr size_t kMaxPrograms = 1000; // on stations
constexpr size_t kMaxHeadline = 160;  // bytes of a message in one line

/// All that is known of one site, the latest entry first.
using Site = std::vector<const Entry*>;

std::vector<Site> sitesOf(const Table& table) {
    using Key = std::tuple<std::string_view, int64_t, std::string_view>;
    std::vector<Site> sites;
    std::map<Key, size_t> places;
    for (const Entry& entry : table.entries()) {
        const Report& report = entry.report;
        const auto [found, isNew] =
            places.try_emplace(Key(report.file, report.line, report.type), sites.size());
        if (isNew)
            sites.emplace_back();
        sites[found->second].push_back(&entry);
    }
    return sites;
}

/// What the entries of a site, or of a program on a station, come to.
struct Sum {
    explicit Sum(const std::vector<const Entry*>& entries) {
        for (const Entry* entry : entries) {
            arrived += entry->arrived;
            missing += entry->missing();
            last = std::max(last, entry->last);
        }
    }
    int64_t arrived = 0;
    int64_t missing = 0;
    int64_t last = 0;
};

std::string countText(uint64_t number, const char* one, const char* many) {
    return core::format("%u %s", number, number == 1 ? one : many);
}

std::string missingText(const Sum& sum) {
    return sum.missing > 0 ? core::format(" (%d more not received)", sum.missing) : std::string();
}

std::string failuresText(const Sum& sum) { return std::to_string(sum.arrived) + missingText(sum); }

/// "2022-03-29 10:30:18 UTC".
void addTime(HtmlWriter& page, int64_t time) {
    const std::string iso = isoTime(time);
    page.element("time", iso.substr(0, 10) + ' ' + iso.substr(11, 8) + " UTC", {{"datetime", iso}});
}

void addCell(HtmlWriter& page, const std::string& text) { page.element("td", text); }

void addTimeCell(HtmlWriter& page, int64_t time) {
    page.open("td");
    addTime(page, time);
    page.close();
}

/// In a box of its own, which can be scrolled by keyboard where the screen is narrow.
void openTable(HtmlWriter& page, const char* caption, std::initializer_list<const char*> headings) {
    page.open(
        "div",
        {{"class", "scroll"}, {"role", "region"}, {"tabindex", "0"}, {"aria-label", caption}});
    page.open("table");
    page.element("caption", caption);
    page.open("thead");
    page.open("tr");
    for (const char* heading : headings)
        page.element("th", heading, {{"scope", "col"}});
    page.close();
    page.close();
    page.open("tbody");
}

void closeTable(HtmlWriter& page) {
    for (int depth = 0; depth < 3; ++depth)
        page.close();
}

void addHead(HtmlWriter& page) {
    page.doctype();
    page.open("html", {{"lang", "en"}});
    page.open("head");
    page.open("meta", {{"charset", "utf-8"}});
    page.open("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    page.open("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
    page.element("title", "Failures");
    page.element("style", kStyle);
    page.close();
}

void addSummary(HtmlWriter& page, const Table& table, const Counts& counts, int64_t time) {
    page.open("header");
    page.element("h1", "Failures");
    page.open("p");
    page.text("Made ");
    addTime(page, time);
    page.text(", with " + countText(counts.reports, "report", "reports") + " since ");
    addTime(page, counts.started);
    if (counts.malformed > 0)
        page.text("; " + countText(counts.malformed, "datagram was", "datagrams were") +
                  " no report");
    if (table.givenUp() > 0)
        page.text("; " + countText(table.givenUp(), "old entry", "old entries") +
                  " made room for others");
    page.text(".");
    page.close();
    page.close();
}

void addPrograms(HtmlWriter& page, const Table& table) {
    using Key = std::tuple<std::string_view, std::string_view, std::string_view>;
    std::map<Key, std::vector<const Entry*>> programs;
    for (const Entry& entry : table.entries()) {
        const Report& report = entry.report;
        const Key key(report.hostname, report.product, report.swver);
        if (programs.size() < kMaxPrograms || programs.contains(key))
            programs[key].push_back(&entry);
    }
    page.open("section", {{"aria-labelledby", "stations"}});
    page.element("h2", "Stations", {{"id", "stations"}});
    openTable(page, "Programs that reported",
              {"Station", "Product", "Version", "System", "Failures", "Last"});
    for (const auto& [key, entries] : programs) {
        const Report& report = entries.front()->report;
        const Sum sum(entries);
        page.open("tr");
        page.element("th", report.hostname, {{"scope", "row"}});
        for (const std::string& text : {report.product, report.swver, report.os, failuresText(sum)})
            addCell(page, text);
        addTimeCell(page, sum.last);
        page.close();
    }
    closeTable(page);
    page.close();
}

std::string headline(const std::string& message) {
    std::string line = message.substr(0, message.find('\n'));
    if (line.size() > kMaxHeadline)
        line.replace(utf::lengthWithin(kMaxHeadline, line), std::string::npos, "...");
    return line;
}

void addDetail(HtmlWriter& page, const char* name, const std::string& text) {
    if (text.empty())
        return;
    page.element("dt", name);
    page.element("dd", text);
}

void addStationsOfSite(HtmlWriter& page, const Site& site) {
    openTable(page, "Where it fails",
              {"Station", "Product", "Version", "Received", "In all", "First", "Last"});
    for (const Entry* entry : site) {
        const Report& report = entry->report;
        page.open("tr");
        page.element("th", report.hostname, {{"scope", "row"}});
        for (const std::string& text :
             {report.product, report.swver, std::to_string(entry->arrived),
              std::to_string(entry->total)})
            addCell(page, text);
        addTimeCell(page, entry->first);
        addTimeCell(page, entry->last);
        page.close();
    }
    closeTable(page);
}

void addSiteSummary(HtmlWriter& page, const Site& site) {
    const Report& report = site.front()->report;
    const Sum sum(site);
    std::set<std::string_view> stations;
    for (const Entry* entry : site)
        stations.insert(entry->report.hostname);
    page.open("summary");
    page.element("strong", core::format("%s:%d", report.file, report.line));
    page.text(" ");
    page.element("span", report.type, {{"class", report.type}});
    page.text(" ");
    page.element("span", headline(report.message.empty() ? report.condition : report.message),
                 {{"class", "headline"}});
    page.text(" ");
    page.open("span", {{"class", "numbers"}});
    page.text(countText(static_cast<uint64_t>(sum.arrived), "failure", "failures") +
              missingText(sum) + " on " + countText(stations.size(), "station", "stations") +
              ", last ");
    addTime(page, site.front()->last);
    page.close();
    page.close();
}

void addSite(HtmlWriter& page, const Site& site) {
    const Report& report = site.front()->report;
    page.open("details", {{"class", "failure"}});
    addSiteSummary(page, site);
    page.open("dl");
    addDetail(page, "Message", report.message);
    addDetail(page, "Condition", report.condition);
    addDetail(page, "Level", std::to_string(report.level));
    addDetail(page, "The program", report.action == "abort" ? "stopped" : "went on");
    addDetail(page, "Station's clock", report.utc);
    addDetail(page, "Logs", report.log_url);
    page.close();
    addStationsOfSite(page, site);
    if (!report.backtrace.empty()) {
        page.open("details", {{"class", "backtrace"}});
        page.element("summary", core::format("Backtrace on %s", report.hostname));
        page.element("pre", report.backtrace, {{"tabindex", "0"}});
        page.close();
    }
    page.close();
}

void addSites(HtmlWriter& page, const std::vector<Site>& sites) {
    const size_t shown = std::min(sites.size(), kMaxSites);
    page.open("section", {{"aria-labelledby", "sites"}});
    page.element("h2", "Failures by site", {{"id", "sites"}});
    page.open("p", {{"class", "filter"}});
    page.element("label", "Show only what contains", {{"for", "filter"}});
    page.text(" ");
    page.open("input", {{"id", "filter"}, {"type", "search"}, {"autocomplete", "off"}});
    page.text(" ");
    page.element("output", countText(shown, "site", "sites"), {{"id", "shown"}, {"for", "filter"}});
    page.close();
    for (size_t i = 0; i < shown; ++i)
        addSite(page, sites[i]);
    if (shown < sites.size())
        page.element("p", core::format("%u older ones are not shown; orvistrand-collect --export "
                                       "has them.",
                                       sites.size() - shown));
    page.close();
}

} // namespace

std::string makePage(const Table& table, const Counts& counts, int64_t time) {
    HtmlWriter page;
    addHead(page);
    page.open("body");
    addSummary(page, table, counts, time);
    page.open("main");
    if (table.entries().empty()) {
        page.element("p", "Nothing has failed so far.");
    } else {
        addSites(page, sitesOf(table));
        addPrograms(page, table);
        page.element("script", kScript);
    }
    return page.finish();
}

} // namespace collect
