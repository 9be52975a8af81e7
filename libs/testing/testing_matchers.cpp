#include "testing_matchers.h"

#include "core_varargs.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"

#include <optional>
#include <ostream>
#include <utility>
#include <vector>

namespace test {
namespace {

using testing::ElementsAre;
using testing::Field;

using FailedChecks = std::vector<FailedCheck>;
using LoggedLines = std::vector<std::string>;

void record(const std::function<void()>& call, FailedChecks& found) {
    CheckRecorder checks;
    call();
    found = checks.take();
}

void record(const std::function<void()>& call, LoggedLines& found) {
    LogRecorder lines(LogRecorder::Channels::All);
    call();
    found = lines.take();
}

const char* verb(const FailedChecks& found) { return found.empty() ? "fails no check" : "fails"; }
const char* verb(const LoggedLines& found) { return found.empty() ? "logs nothing" : "logs"; }

/// Makes a call and judges what was recorded meanwhile.
template <typename Found>
class Leaves : public testing::MatcherInterface<std::function<void()>> {
public:
    Leaves(testing::Matcher<const Found&> expected, std::string description)
        : d_expected(std::move(expected)), d_description(std::move(description)) {}

    bool MatchAndExplain(std::function<void()> call,
                         testing::MatchResultListener* listener) const override {
        // GoogleTest asks again in order to explain; the call is not repeated for that.
        if (!listener->IsInterested() || !d_found.has_value())
            record(call, d_found.emplace());
        *listener << "which " << verb(*d_found);
        for (const auto& one : *d_found)
            *listener << "\n    " << one;
        const bool matches = d_expected.Matches(*d_found);
        if (listener->IsInterested())
            d_found.reset();
        return matches;
    }
    void DescribeTo(std::ostream* out) const override { *out << d_description; }

private:
    testing::Matcher<const Found&> d_expected;
    std::string d_description;
    mutable std::optional<Found> d_found;
};

template <typename Found>
CallMatcher leaves(const testing::Matcher<const Found&>& expected, std::string description) {
    return CallMatcher(new Leaves<Found>(expected, std::move(description)));
}

std::string thatIs(const TextMatcher& text) {
    return " that " + testing::DescribeMatcher<const std::string&>(text);
}

} // namespace

CallMatcher FailsCheck(const core::CheckSite& site, const TextMatcher& message) {
    return leaves<FailedChecks>(
        ElementsAre(testing::AllOf(Field(&FailedCheck::file, std::string(site.file)),
                                   Field(&FailedCheck::line, site.line),
                                   Field(&FailedCheck::message, message))),
        core::format("fails the check at %s:%d with a message", site.file, site.line) +
            thatIs(message));
}

CallMatcher FailsCheck(const TextMatcher& message) {
    return leaves<FailedChecks>(ElementsAre(Field(&FailedCheck::message, message)),
                                "fails a check with a message" + thatIs(message));
}

CallMatcher FailsNoCheck() { return leaves<FailedChecks>(testing::IsEmpty(), "fails no check"); }

CallMatcher Logs(const TextMatcher& line) {
    return leaves<LoggedLines>(testing::Contains(line), "logs a line" + thatIs(line));
}

CallMatcher LogsNothing() { return leaves<LoggedLines>(testing::IsEmpty(), "logs nothing"); }

} // namespace test
