#pragma once

#include "core_check.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>

/// What a call of a function object does, for EXPECT_THAT and ASSERT_THAT:
///
///     EXPECT_THAT([&] { viewer.start(); }, FailsCheck(kNoCamera, "there are 0"));
///     EXPECT_THAT([&] { viewer.start(); }, Logs("WARN the disk is 97 % full"));
///
/// Each matcher makes the call once, and judges what all threads do until it returns. Where a
/// text is expected, any matcher of texts will do, such as testing::HasSubstr.
namespace test {

/// For EXPECT_THAT on a function object.
using CallMatcher = testing::Matcher<std::function<void()>>;
/// What a text must be like; made of the text itself, too.
using TextMatcher = testing::Matcher<const std::string&>;

/// One check fails, the one at the site. Handlers are not told of it; the call goes on behind
/// the check.
CallMatcher FailsCheck(const core::CheckSite& site, const TextMatcher& message = testing::_);

/// One check fails, wherever it stands.
CallMatcher FailsCheck(const TextMatcher& message);

/// No check fails.
CallMatcher FailsNoCheck();

/// A line is logged, as "CHANNEL TEXT"; others may be as well. All channels are switched on
/// meanwhile, so that those are seen, too, that are off at start.
CallMatcher Logs(const TextMatcher& line);

/// Nothing is logged on any channel.
CallMatcher LogsNothing();

} // namespace test
