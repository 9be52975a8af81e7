#!/usr/bin/env python3
"""Finishes a folder about to be packed: lists its files in an SPDX document and sets the
time of every file to SOURCE_DATE_EPOCH.

    finish_package.py ROOT [--contents CONTENTS.json DOCUMENT]

CONTENTS.json describes the package and the third-party components in it. DOCUMENT is the
path of the list below ROOT; the list does not contain itself.
"""
import argparse
import datetime
import hashlib
import json
import os
import re
import time
from fnmatch import fnmatchcase
from pathlib import Path

NONE = "NOASSERTION"


def identifier(kind, text):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.-]", "-", text)


def file_entry(root, path, contents):
    """The file's owner, the first component with a pattern for it, and its SPDX entry."""
    name, data = path.relative_to(root).as_posix(), path.read_bytes()
    owner = next((part for part in contents["components"]
                  if any(fnmatchcase(name, pattern) for pattern in part["files"])), contents)
    sums = {sum_name: hashlib.new(sum_name.lower(), data).hexdigest()
            for sum_name in ("SHA1", "SHA256")}
    return owner, {
        "SPDXID": identifier("File", name), "fileName": "./" + name,
        "checksums": [{"algorithm": algorithm, "checksumValue": value}
                      for algorithm, value in sums.items()],
        "licenseConcluded": owner["license"], "licenseInfoInFiles": [NONE],
        "copyrightText": owner["copyright"]}


def package_entry(part, entries):
    """The SPDX entry of a component, with its files in this package, if any."""
    package = {
        "SPDXID": identifier("Package", part["name"]), "name": part["name"],
        "versionInfo": part["version"], "supplier": part["supplier"],
        "downloadLocation": part.get("source", NONE), "filesAnalyzed": bool(entries),
        "licenseConcluded": part["license"], "licenseDeclared": part["license"],
        "copyrightText": part["copyright"]}
    if entries:
        sums = sorted(entry["checksums"][0]["checksumValue"] for entry in entries)
        package["packageVerificationCode"] = {
            "packageVerificationCodeValue": hashlib.sha1("".join(sums).encode()).hexdigest()}
        package["licenseInfoFromFiles"] = [NONE]
    return package


def document(root, files, contents, created):
    owned = [file_entry(root, path, contents) for path in files]
    packages, relations = [], []

    def relate(one, kind, other):
        relations.append({"spdxElementId": one, "relationshipType": kind,
                          "relatedSpdxElement": other})

    for part in (contents, *contents["components"]):
        entries = [entry for owner, entry in owned if owner is part]
        if part.get("files") and not entries:
            continue  # it belongs to another package of this platform
        package = package_entry(part, entries)
        packages.append(package)
        whole = packages[0]["SPDXID"]
        if part is contents:
            relate("SPDXRef-DOCUMENT", "DESCRIBES", whole)
        else:
            relate(whole, part["relation"], package["SPDXID"])
        for entry in entries:
            relate(package["SPDXID"], "CONTAINS", entry["SPDXID"])
    made_of = hashlib.sha256(json.dumps(packages).encode()).hexdigest()
    name = re.sub(r"[^\w.-]+", "-", "{name}-{version}-{platform}".format_map(contents))
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": name, "documentNamespace": f'{contents["url"]}/spdx/{name}-{made_of[:16]}',
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": [contents["supplier"], "Tool: finish_package.py"]},
        "hasExtractedLicensingInfos": contents["licenses"],
        "packages": packages, "files": [entry for _, entry in owned],
        "relationships": relations}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=Path)
    parser.add_argument("--contents", nargs=2, metavar=("CONTENTS", "DOCUMENT"))
    options = parser.parse_args()
    root, epoch = options.root, os.environ.get("SOURCE_DATE_EPOCH")
    if options.contents:
        contents = json.loads(Path(options.contents[0]).read_text("utf-8"))
        place = root / options.contents[1]
        files = sorted(path for path in root.rglob("*") if path.is_file() and path != place)
        created = datetime.datetime.fromtimestamp(float(epoch or time.time()),
                                                  datetime.timezone.utc)
        place.write_text(json.dumps(document(root, files, contents, created), indent=1) + "\n",
                         "utf-8")
        place.chmod(0o644)
    if epoch:
        for path in [*root.rglob("*"), root]:
            os.utime(path, (float(epoch), float(epoch)))


if __name__ == "__main__":
    main()
