#!/usr/bin/env python3
"""What a package of Valtrino is made of, as SPDX 2.3:

    sbom.py <version> <epoch> <relation> <Debian package>...

The relation is what they are to it: CONTAINS (carried along) or DEPENDS_ON. Their versions are those
installed here, unless one is told: <source package>=<version>. The same arguments on the same machine
give the same bytes.
"""

import datetime
import hashlib
import json
import re
import subprocess
import sys

# As their own texts say, which are carried along or lie in /usr/share/doc; others aren't claimed.
LICENCES = [
    (r"libqt6|qt6-", "LGPL-3.0-only"),
    (r"(lib)?sqlite3", "blessing"),
    (r"libxlsxwriter", "BSD-2-Clause"),
    (r"libxxhash", "BSD-2-Clause"),
    (r"libxcb-|libxkbcommon", "MIT"),
    (r"libmd4c", "MIT"),
    (r"libb2", "CC0-1.0"),
    (r"libdouble-conversion", "BSD-3-Clause"),
    (r"libpcre2", "BSD-3-Clause"),
    (r"libz-mingw", "Zlib"),
    (r"gcc-mingw.*-runtime", "GPL-3.0-or-later WITH GCC-exception-3.1"),
]


def licence_of(package):
    found = (licence for pattern, licence in LICENCES if re.match(pattern, package))
    return next(found, "NOASSERTION")


def entry(name, version, licence, supplier):
    return {
        "SPDXID": "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name),
        "name": name,
        "versionInfo": version,
        "supplier": supplier,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": "NOASSERTION",
    }


def main(version, epoch, relation, *names):
    program = entry("Valtrino", version, "MIT", "Organization: The Valtrino developers")
    icons = entry("Lucide-icons", "NOASSERTION", "ISC AND MIT", "Organization: Lucide Contributors")
    del icons["versionInfo"]
    packages, relations = [program, icons], [("CONTAINS", icons)]
    listed = subprocess.run(
        ["dpkg-query", "-W", "-f", "${Package} ${Version}\n",
         *sorted({name for name in names if "=" not in name})],
        check=True, capture_output=True, text=True).stdout.splitlines()
    listed += [name.replace("=", " ", 1) for name in names if "=" in name]
    for name, installed in (line.split() for line in sorted(set(listed))):
        packages.append(entry(name, installed, licence_of(name), "Organization: Debian"))
        relations.append((relation, packages[-1]))
    document = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"valtrino-{version}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(
                int(epoch), datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Tool: packaging/sbom.py"],
        },
        "packages": packages,
        "relationships": [
            {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
             "relatedSpdxElement": program["SPDXID"]},
            *({"spdxElementId": program["SPDXID"], "relationshipType": kind,
               "relatedSpdxElement": other["SPDXID"]} for kind, other in relations),
        ],
    }
    content = json.dumps(document, sort_keys=True)
    document["documentNamespace"] = (
        "urn:sha256:" + hashlib.sha256(content.encode()).hexdigest())
    json.dump(document, sys.stdout, indent=1, sort_keys=True)
    print()


main(*sys.argv[1:])
