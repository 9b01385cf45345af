#!/usr/bin/env python3
"""manifests.py FOLDER URL: checksums of the packages in the folder, and manifests that install them by winget and scoop
from below the URL."""

import datetime
import hashlib
import json
import os
import pathlib
import re
import sys

ID = "VENTO.VENTO"
SUMMARY = "Puts code tables into a programmable TV remote control"
HEAD = "PackageIdentifier: {id}\nPackageVersion: {version}\n"
TAIL = "ManifestType: {kind}\nManifestVersion: 1.4.0\n"

INSTALLER = """Platform:
- Windows.Desktop
MinimumOSVersion: 10.0.18362.0
InstallerType: nullsoft
UpgradeBehavior: install
ProductCode: VENTO
Commands:
- ventoctl
FileExtensions:
- qlb
ReleaseDate: {date}
ExpectedReturnCodes:
- InstallerReturnCode: 1
  ReturnResponse: cancelledByUser
- InstallerReturnCode: 4
  ReturnResponse: packageInUse
- InstallerReturnCode: 6
  ReturnResponse: systemNotSupported
Installers:
- Architecture: x64
  Scope: user
  InstallerUrl: {url}
  InstallerSha256: {sha256}
- Architecture: x64
  Scope: machine
  InstallerUrl: {url}
  InstallerSha256: {sha256}
  InstallerSwitches:
    Custom: /ALLUSERS
  ElevationRequirement: elevatesSelf
"""
LOCALE = """PackageLocale: en-US
Publisher: VENTO
PackageName: VENTO
License: none chosen yet
ShortDescription: {summary}
"""


def main(folder, address):
    folder = pathlib.Path(folder)
    packages = sorted(folder.glob("VENTO-*-windows-x64.*"))
    hashes = {each.suffix: hashlib.sha256(each.read_bytes()).hexdigest() for each in packages}
    (folder / "SHA256SUMS").write_text("".join(f"{hashes[each.suffix]}  {each.name}\n" for each in packages))
    urls = {each.suffix: f"{address}/{each.name}" for each in packages}
    version = re.search(r"VENTO-([\d.]+)-", packages[0].name)[1]
    date = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc).date()

    winget = folder / "winget"
    winget.mkdir(exist_ok=True)
    values = {"id": ID, "version": version, "summary": SUMMARY, "date": date, "url": urls[".exe"],
              "sha256": hashes[".exe"].upper()}
    for name, kind, body in (("", "version", "DefaultLocale: en-US\n"), (".installer", "installer", INSTALLER),
                             (".locale.en-US", "defaultLocale", LOCALE)):
        text = (HEAD + body + TAIL).format(kind=kind, **values)
        (winget / f"{ID}{name}.yaml").write_text(text)

    scoop = {"version": version, "description": SUMMARY, "homepage": address, "license": "Unknown",
             "architecture": {"64bit": {"url": urls[".zip"], "hash": hashes[".zip"]}},
             "bin": "ventoctl.exe", "shortcuts": [["vento.exe", "VENTO"]]}
    (folder / "scoop").mkdir(exist_ok=True)
    (folder / "scoop" / "vento.json").write_text(json.dumps(scoop, indent=4) + "\n")


main(*sys.argv[1:])
