#!/usr/bin/env python3
"""Tries to compile calls with wrong formats: each must be refused by one error, in the words
given.

Usage: wrong_formats.py COMPILER [OPTION...]
"""
import subprocess
import sys

ROWS = [
    # What is called, and what the compiler's complaint must hold; None: it compiles.
    ('format("%d %s %f %p %c%%", 1, "text", 0.5, nullptr, \'c\')', None),
    ('format("%5.1S", std::string("text"))', None),
    ("format(core::runtimeFormat(text), text)", None),
    ('format("%d", text)', "error_c_strings_take_the_conversions_s_S_p"),
    ('format("%p", std::string())', "error_texts_take_the_conversions_s_S"),
    ('format("%s", 1)', "error_integers_take_the_conversions_d_i_u_o_x_X_c"),
    ('format("%s", \'c\')', "error_integers_take_the_conversions_d_i_u_o_x_X_c"),
    ('format("%d", 0.5)', "error_floating_point_takes_the_conversions_f_F_g_G_e_E_a_A"),
    ('format("%s", nullptr)', "error_pointers_take_the_conversion_p"),
    ('format("%d %d", 1)', "error_conversion_without_argument"),
    ('format("%d%", 1, 2)', "error_argument_without_conversion"),
    ('format("%*d", 5, 1)', "error_integers_take_the_conversions_d_i_u_o_x_X_c"),
    ("format(text)", "constant expression"),
    ('format("%s", Unknown())', "this argument cannot be formatted"),
    ('logf(core::kChannelInfo, "%d", text)', "error_c_strings_take_the_conversions_s_S_p"),
    ('logFrom(core::kChannelInfo, "f", "%d")', "error_conversion_without_argument"),
]
SOURCE = """#include "core_log.h"
struct Unknown {{}};
void call(const char* text) {{ (void)text, core::{}; }}
"""


def complaint(compiler, call):
    run = subprocess.run([*compiler, "-x", "c++", "-std=c++20", "-fsyntax-only", "-"],
                         input=SOURCE.format(call), capture_output=True, text=True)
    return run.stderr if run.returncode != 0 else None


def holds(compiler, call, words):
    said = complaint(compiler, call)
    if (said is None) if words is None else (said or "").count(" error: ") == 1 and words in said:
        return True
    print(f"{call}\n  expected: {words or 'compiles'}\n  compiler: {said or 'compiled it'}")
    return False


sys.exit(0 if all([holds(sys.argv[1:], *row) for row in ROWS]) else 1)
