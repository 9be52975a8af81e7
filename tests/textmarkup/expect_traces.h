#pragma once

#include "textmarkup_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

/// Documents, and the traces that a reader makes of them.
using Traces = std::vector<std::pair<std::string, std::string>>;

template <typename Trace>
void expectTraces(Trace trace, const Traces& rows, const textmarkup::Limits& limits = {}) {
    for (const auto& [document, expected] : rows)
        EXPECT_EQ(trace(document, limits), expected) << testing::PrintToString(document);
}
