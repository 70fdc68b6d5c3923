"""Rewrites a ZIP so that the same files make the same bytes: sorted, without owners, each with the
time of SOURCE_DATE_EPOCH and the mode of a plain file."""
import os
import sys
import time
import zipfile

seconds = int(os.environ.get("SOURCE_DATE_EPOCH", "315532800"))  # the earliest that a ZIP knows
moment = time.gmtime(max(seconds, 315532800))[:6]
source, result = sys.argv[1], sys.argv[1] + ".tmp"
with zipfile.ZipFile(source) as old, zipfile.ZipFile(result, "w") as new:
    for name in sorted(old.namelist()):
        if name.endswith("/"):
            continue
        entry = zipfile.ZipInfo(name, moment)
        entry.create_system, entry.external_attr = 3, 0o100644 << 16
        entry.compress_type = zipfile.ZIP_DEFLATED
        new.writestr(entry, old.read(name), compresslevel=9)
os.replace(result, source)
