#!/usr/bin/env python3
"""Runs end-to-end scenarios against a build of the tool; CTest calls it for each one.

    tests/e2e/run.py                        all of them, against build/linux
    tests/e2e/run.py Writing.test_umlauts   one of them
"""

import argparse
import contextlib
import resource
import sys
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "tools"))

import scenarios  # noqa: E402
from desktop import Desktop  # noqa: E402
from tool import Linux, set_aside  # noqa: E402
from tool_windows import Windows, fresh_prefix  # noqa: E402

BUILD = REPOSITORY / "build" / "linux"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--list", action="store_true", help="print the scenarios' names")
    parser.add_argument("--tool", type=Path, default=BUILD / "configure" / "configure")
    parser.add_argument("--helper", type=Path, default=BUILD / "tests" / "e2e" / "configure_e2e")
    parser.add_argument("--collector", type=Path,
                        default=BUILD / "collect" / "orvistrand-collect")
    parser.add_argument("--common-data", type=Path, default=BUILD / "common-data")
    parser.add_argument("--wine", type=Path, help="a command that runs Windows programs, "
                        "of which the tool is one")
    parser.add_argument("names", nargs="*", metavar="CLASS.TEST")
    return parser.parse_args()


def all_names(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from all_names(test)
        else:
            yield test.id().removeprefix("scenarios.")


@contextlib.contextmanager
def platform_for(arguments):
    # The tool runs in other working directories, so relative paths would not work.
    tool, helper = arguments.tool.resolve(), arguments.helper.resolve()
    if arguments.wine:
        wine = arguments.wine.resolve()
        with fresh_prefix(wine) as prefix:
            yield Windows(wine, tool, helper, prefix)
    else:
        common_data = arguments.common_data.resolve()
        with set_aside(common_data):
            yield Linux(tool, helper, common_data)


def main():
    arguments = parse_arguments()
    loader = unittest.defaultTestLoader
    if arguments.list:
        print("\n".join(all_names(loader.loadTestsFromModule(scenarios))))
        return 0
    suite = (loader.loadTestsFromNames(arguments.names, scenarios) if arguments.names
             else loader.loadTestsFromModule(scenarios))
    # Some scenarios end the tool by a fault; its core dump would be useless.
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    with platform_for(arguments) as platform, Desktop() as desktop:
        scenarios.Scenario.platform = platform
        scenarios.Scenario.collector = arguments.collector.resolve()
        scenarios.Scenario.desktop = desktop
        result = unittest.TextTestRunner(verbosity=2).run(suite)
    return 0 if result.testsRun and result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
