# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The output file: replaced as a whole or not touched at all."""

import subprocess

import http_server
import isolation
import program_tests
import report_text

OUTPUTS = [("seq 20000", "".join(f"{number}\n" for number in range(1, 20001)))]
REPORT = report_text.report(OUTPUTS)
FAILURE = "could not save diagnostic_results.txt"


class OutputFileTest(program_tests.ProgramTest):
    def save(self, path, options=("-s",), **others):
        return self.run_test_build([*options, f"-o={path}"], ["seq 20000"], **others)

    def assert_saved(self, ended, path):
        self.assertEqual(ended.stdout, f"outputFile={path}\n".encode())
        self.assertEqual(ended.messages, [])
        self.assertEqual(ended.status, 0)
        self.assert_same_text((self.work / path).read_bytes(), REPORT)

    def assert_not_saved(self, ended, path):
        self.assertEqual(ended.stdout, f"outputFile={path}\n".encode())
        self.assertEqual(ended.messages, [FAILURE])
        self.assertEqual(ended.status, 0)

    def test_a_new_file(self):
        self.assert_saved(self.save("F"), "F")
        self.assert_only_files(self.work, ["F"])

    def test_an_old_file_is_replaced_as_a_whole(self):
        for size in (0, 5, 10 * len(REPORT)):
            with self.subTest(size):
                old = b"o" * size
                (self.work / "F").write_bytes(old)
                with open(self.work / "F", "rb") as still_open:
                    self.assert_saved(self.save("F"), "F")
                    self.assertEqual(still_open.read(), old, "the old file itself was written to")
                self.assert_only_files(self.work, ["F"])

    def test_a_missing_folder(self):
        self.assert_not_saved(self.save("none/F"), "none/F")
        self.assert_only_files(self.work, [])

    def test_a_folder_in_its_place(self):
        (self.work / "empty").mkdir()
        (self.work / "full").mkdir()
        (self.work / "full" / "old").write_text("old")
        for name, content in (("empty", []), ("full", ["old"]), ("empty/", []), (".", ["empty", "full"])):
            with self.subTest(name):
                self.assert_not_saved(self.save(name), name)
                self.assert_only_files(self.work, ["empty", "full"])
                self.assert_only_files(self.work / name, content)

    def test_a_file_in_the_place_of_its_folder(self):
        (self.work / "file").write_text("old")
        self.assert_not_saved(self.save("file/F"), "file/F")
        self.assertEqual((self.work / "file").read_text(), "old")
        self.assert_only_files(self.work, ["file"])

    def test_a_name_that_is_too_long(self):
        self.assert_not_saved(self.save("n" * 300), "n" * 300)
        self.assert_only_files(self.work, [])

    def test_the_longest_name(self):
        self.assert_saved(self.save("n" * 255), "n" * 255)
        self.assert_only_files(self.work, ["n" * 255])

    def test_an_unwritable_folder(self):
        folder = self.work / "folder"
        folder.mkdir()
        (folder / "F").write_text("old")
        folder.chmod(0o555)
        self.addCleanup(folder.chmod, 0o755)
        if subprocess.run([*program_tests.UNPRIVILEGED, "touch", folder / "x"], capture_output=True).returncode == 0:
            self.skipTest("permissions do not bind this user")
        self.assert_not_saved(self.save("folder/F", prefix=program_tests.UNPRIVILEGED), "folder/F")
        self.assertEqual((folder / "F").read_text(), "old")
        self.assert_only_files(folder, ["F"])

    def test_a_write_protected_file_in_a_writable_folder_is_replaced(self):
        (self.work / "F").write_text("old")
        (self.work / "F").chmod(0o444)
        self.assert_saved(self.save("F", prefix=program_tests.UNPRIVILEGED), "F")
        self.assert_only_files(self.work, ["F"])

    def test_the_upload_follows_a_failed_save(self):
        server = http_server.Server(http_server.reply(b"http://results.halvik.example/1"))
        ended = self.save("none/F", ["-s", "-i", "-c"], submit=server.url())
        server.close()
        self.assert_same_text(ended.stdout,
                              REPORT + b"\noutputFile=none/F\nurl=http://results.halvik.example/1\n")
        self.assertEqual(ended.messages, [FAILURE])
        self.assertEqual(ended.status, 0)
        self.assertEqual([request.submitted for request in server.requests], [REPORT])


@isolation.needs_namespaces
class FullDiskTest(program_tests.ProgramTest):
    def mount_disk(self, limits):
        self.disk = self.folder / "disk"
        self.disk.mkdir()
        isolation.mount("-t", "tmpfs", "-o", limits, "none", self.disk)
        self.addCleanup(isolation.uncover, self.disk)

    def assert_nothing_changes(self):
        before = {path.name: path.read_bytes() for path in self.disk.iterdir()}
        ended = self.run_test_build(["-s", f"-o={self.disk}/F"], ["seq 20000"])
        self.assertEqual(ended.stdout, f"outputFile={self.disk}/F\n".encode())
        self.assertEqual(ended.messages, [FAILURE])
        self.assertEqual(ended.status, 0)
        self.assertEqual({path.name: path.read_bytes() for path in self.disk.iterdir()}, before)

    def test_room_for_a_part_of_the_report(self):
        self.mount_disk("size=64k")
        self.assertGreater(len(REPORT), 65536)
        self.assert_nothing_changes()
        (self.disk / "F").write_text("old\n" * 1000)
        self.assert_nothing_changes()

    def test_room_for_nothing(self):
        self.mount_disk("size=64k")
        with open(self.disk / "other", "wb", buffering=0) as other, self.assertRaises(OSError):
            while True:
                other.write(b"x" * 4096)
        self.assert_nothing_changes()

    def test_no_room_for_another_name(self):
        the_folder_and_one_file = 2
        self.mount_disk(f"size=1m,nr_inodes={the_folder_and_one_file}")
        (self.disk / "F").write_text("old")
        self.assert_nothing_changes()

    def test_a_disk_that_is_only_read(self):
        self.mount_disk("size=1m")
        (self.disk / "F").write_text("old")
        isolation.mount("-o", "remount,bind,ro", self.disk)
        self.assert_nothing_changes()


isolation.run_tests()
