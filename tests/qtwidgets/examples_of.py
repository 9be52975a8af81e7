#!/usr/bin/env python3
"""examples_of.py DOCUMENT: prints a GoogleTest source in which each C++ example of the
document is a test, named by the heading it stands under. An example is statements that
may use `parent`, a window, and `picture`, a pixmap of 48 x 24.
"""
import re
import sys
from pathlib import Path

HEAD = """// Made of {name}.
#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_buttonstrips.h"
#include "qt_fractionspinbox.h"
#include "qt_hyperlinklabel.h"
#include "qt_iconfactory.h"
#include "qt_iconset.h"
#include "qt_iconwidget.h"
#include "qt_infobutton.h"
#include "qt_smartcombobox.h"
#include "qt_spinslider.h"
#include "qt_timermanager.h"
#include "qt_widgetbuilder.h"

#include <QLineEdit>
#include <QSlider>
#include <QStyle>

#include <gtest/gtest.h>

namespace {{

/// What applications connect: the last thing that was said.
QString said;

class Examples : public testing::Test {{
protected:
    QWidget window;
    QWidget* const parent = &window;
    const QPixmap picture{{48, 24}};
    NS_QT::QtTimerManager timers;
}};
"""


def tests(text, name):
    heading = "Document"
    lines = iter(enumerate(text.splitlines(), 1))
    for number, line in lines:
        if line.startswith("## "):
            heading = re.sub(r"\W", "", line.title())
        if line != "```cpp":
            continue
        body = []
        for _, inner in lines:
            if inner == "```":
                break
            body.append(inner)
        yield f'\nTEST_F(Examples, {heading}At{number}) {{\n#line {number + 1} "{name}"\n'
        yield "\n".join(body) + "\n}\n"


document = Path(sys.argv[1])
print(HEAD.format(name=document.name), end="")
print("".join(tests(document.read_text(encoding="utf-8"), document.name)), end="")
print("\n} // namespace")
