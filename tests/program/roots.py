# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A /Library of a test's own, below a root folder for the program alone, which also shows the machine's files.

That folder exists only in a mount namespace that ends with the program, so that no test can remove the machine's files.
"""

# The arguments: a folder for the root, the folder that is to be /Library, the working directory, and the program's.
SCRIPT = """
set -e
root=$1 library=$2 work=$3
shift 3
mount -t tmpfs none "$root"
for entry in /*; do
  if [ -L "$entry" ]; then
    ln -s "$(readlink "$entry")" "$root$entry"
  elif [ -d "$entry" ] && [ "$entry" != /Library ]; then
    mkdir "$root$entry"
    mount --rbind "$entry" "$root$entry"
  fi
done
mkdir "$root/Library"
mount --bind "$library" "$root/Library"
exec chroot "$root" /bin/sh -c 'cd "$0"; exec "$@"' "$work" "$@"
"""


class Library:
    def __init__(self, test):
        root, folder = test.folder / "root", test.folder / "Library"
        root.mkdir()
        folder.mkdir()
        self.skivra = folder / "Application Support" / "Halvik Skivra"
        self.prefix = ["unshare", "--mount", "/bin/sh", "-c", SCRIPT, "sh", root, folder, test.work]
