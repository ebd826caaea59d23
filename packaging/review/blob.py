"""Ids that git gives to contents of files."""

import hashlib
import os


def has_blob(top, path, blob):
    """Whether a file in the directory `top` has exactly these contents; False for a file that cannot be read."""
    try:
        with open(os.path.join(top, path), "rb") as file:
            data = file.read()
    except (OSError, ValueError):
        return False
    algorithm = hashlib.sha256 if len(blob or "") == 64 else hashlib.sha1
    return algorithm(b"blob %d\0" % len(data) + data).hexdigest() == blob
