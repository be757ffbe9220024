#!/usr/bin/env python3
"""sbom.py BUILD: the bill of materials names what is meant to be inside, and nothing else.

A library that comes to be linked, or a header that comes to be compiled in, has to be entered here.
"""

import hashlib
import json
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

HEADERS = {"libc6-dev", "libgcc-12-dev", "libstdc++-12-dev", "linux-libc-dev"}
RUN_TIME = {"libc6", "libgcc-s1", "libstdc++6"}
LINKED = {
    "libroxe": {"libc6"},
    "roxe": RUN_TIME | {"libjpeg62-turbo", "liblcms2-2", "libpng16-16", "libtiff6", "libwebp7",
                        "libwebpmux3", "zlib1g"},
    "vips-roxe": RUN_TIME | {"libglib2.0-0", "libvips42"},
    "gegl-roxe": RUN_TIME | {"libbabl-0.1-0", "libgegl-0.4-0", "libglib2.0-0"},
    "roxe.wasm": set(),
}
COMPILED_IN = {
    "libroxe": HEADERS,
    "roxe": HEADERS | {"libcli11-dev", "libjpeg62-turbo-dev", "liblcms2-dev", "libpng-dev",
                       "libtiff-dev", "libwebp-dev", "nlohmann-json3-dev", "zlib1g-dev"},
    "vips-roxe": HEADERS | {"libglib2.0-dev", "libvips-dev"},
    "gegl-roxe": HEADERS | {"libbabl-dev", "libgegl-dev", "libglib2.0-dev"},
    "roxe.wasm": {"libc++-14-dev-wasm32", "libclang-common-14-dev", "wasi-libc"},
}


def check(condition, sentence):
    if not condition:
        sys.exit(sentence)


def main():
    with tempfile.TemporaryDirectory() as folder:
        target = pathlib.Path(folder, "roxe.cdx.json")
        subprocess.run([ROOT / "scripts/sbom", sys.argv[1], target], check=True)
        document = json.loads(target.read_text())
    check((document["bomFormat"], document["specVersion"]) == ("CycloneDX", "1.4"), "no CycloneDX")
    components = document["components"]
    references = {one["bom-ref"] for one in components}
    check(len(references) == len(components), "a component is listed twice")

    artifacts = {one["name"]: one for one in components
                 if one["type"] != "file" and "purl" not in one}
    check({"libroxe", "roxe"} <= set(artifacts) <= set(LINKED), f"artifacts: {sorted(artifacts)}")
    for name, artifact in artifacts.items():
        said = {one["name"]: set(one["value"].split()) for one in artifact["properties"]}
        for what, expected in (("linked", LINKED[name]), ("compiled in", COMPILED_IN[name])):
            check(said[what] == expected, f"{name}, {what}: differ in {said[what] ^ expected}")
        depends, = (one["dependsOn"] for one in document["dependencies"] if one["ref"] == name)
        check(set(depends) <= references, f"{name} depends on what is not listed")
        check({reference.split("/")[2].split("@")[0] for reference in depends} ==
              LINKED[name] | COMPILED_IN[name], f"{name}: other dependencies than packages")

    photographs = {one["name"]: one for one in components if one["type"] == "file"}
    files = {file.name: file for file in (ROOT / "examples/photos").glob("*.[jp][pn]g")}
    check(set(photographs) == set(files), f"photographs: {set(photographs) ^ set(files)}")
    for name, file in files.items():
        digest = hashlib.sha256(file.read_bytes()).hexdigest()
        check(photographs[name]["hashes"][0]["content"] == digest, f"{name}: another checksum")
        licence = photographs[name]["licenses"][0]["license"]["name"]
        check(licence.startswith(("CC BY 4.0", "CC0", "MIT", "BSD 2-Clause", "public domain")),
              f"{name}: {licence}")
    print(f"bill of materials: {len(artifacts)} artifacts, {len(photographs)} photographs")


if __name__ == "__main__":
    main()
