# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The further machines of a customer's office, and what its administrator needs on the user's machine to reach them."""

import os
import pathlib
import shutil
import subprocess

import conditions
import customer_machine
import machine
import namespaces
import network
import servers
import scenarios

KEYS = servers.LAB / "ssh"
PLAYBOOKS = servers.LAB / "ansible"
FOLDER = "halvik"  # the administrator's, in the home folder

INVENTORY = """[office]
{names}

[all:vars]
# Nothing is installed in the lab: this is what has been built.
halvik_diagnostic_program=/lab/program/halvik-diagnostic
halvik_diagnostic_reader=/lab/program/halvik-report
"""


class Office:
    def __init__(self, count, program, uid, gid):
        """The program is what the machines run, from its folder on the host."""
        self._program = program
        self._has_program = program.is_file()  # asked now, as the servers' /tmp may hide it later
        self._uid, self._gid = uid, gid
        self._machines = {name: customer_machine.CustomerMachine(name, address, name, name)
                          for name, address in network.office(count).items()}

    def __getitem__(self, name):
        if name not in self._machines:
            raise servers.ServerFailed(f"there is no machine {name}, or it is switched off")
        return self._machines[name]

    def check(self):
        for each in self._machines.values():
            each.check()

    def start(self, certificate):
        """Each has a line to the home router, which passes on what they say to each other."""
        if not self._machines:
            return
        for name in ("all/proxy_arp=1", "neigh/lan/proxy_delay=0"):
            self._set_at_home(name)
        for each in self._machines.values():
            namespaces.ip([f"link set {each.line} up",
                           f"route add {each.address} dev {each.line} src {network.HOME_LAN_ADDRESS}"], "home")
            self._set_at_home(f"neigh/{each.line}/proxy_delay=0")
            namespaces.ip(["link set lo up", "link set eth0 up"], each.name)
            conditions.set_attachment(each, scenarios.SCENARIOS["clear"])
            each.start(certificate, self._uid, self._gid)

    def _set_at_home(self, setting):
        name, value = setting.split("=")
        path = f"/proc/sys/net/ipv4/{'' if name.startswith('neigh') else 'conf/'}{name}"
        with namespaces.inside("home"), open(path, "w", encoding="ascii") as file:
            file.write(value)

    def finish(self, running, administrators):
        """Waits for all of them, and lets the administrator in."""
        if not self._machines:
            return
        for each in self._machines.values():
            each.finish()
        self._make_keys()
        for each in self._machines.values():
            self._show_program(each)
            self._put(KEYS / each.name, each.root / "lab/ssh/host_key")
            self._put(KEYS / "administrator.pub", each.root / "lab/ssh/authorized_keys")
            running.start([sshd(each)], each.command("setpriv", "--reuid", self._uid, "--regid", self._gid,
                                                     "--clear-groups", "--inh-caps=-all", "--pdeathsig", "TERM", "--"))
        self._equip(administrators)

    def _make_keys(self):
        KEYS.mkdir()
        for name in ["administrator", *self._machines]:
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-C", name, "-f", KEYS / name], check=True,
                           capture_output=True)

    def _show_program(self, each):
        outside = pathlib.Path(f"{machine.OUTSIDE}{self._program.parent}")
        if self._has_program:
            subprocess.run(each.command("mount", "--bind", outside, "/lab/program"), check=True, capture_output=True)

    def _put(self, source, target, mode=0o600):
        target.parent.mkdir(exist_ok=True)
        shutil.copyfile(source, target)
        os.chown(target, self._uid, self._gid)
        target.chmod(mode)

    def _equip(self, administrators):
        """The administrator's key, the machines' names and keys, the playbooks and an inventory for them."""
        with open(administrators.root / "etc/hosts", "a", encoding="ascii") as hosts:
            hosts.writelines(f"{each.address} {each.name}\n" for each in self._machines.values())
        home = administrators.root / machine.HOME.lstrip("/")
        self._put(KEYS / "administrator", home / ".ssh/id_ed25519")
        known = [f"{name} {(KEYS / name).with_suffix('.pub').read_text()}" for name in self._machines]
        (home / ".ssh/known_hosts").write_text("".join(known), encoding="ascii")
        shutil.copytree(PLAYBOOKS, home / FOLDER)
        inventory = home / FOLDER / "office.ini"
        inventory.write_text(INVENTORY.format(names="\n".join(self._machines)), encoding="ascii")
        for folder in (home / ".ssh", home / FOLDER):
            subprocess.run(["chown", "-R", f"{self._uid}:{self._gid}", folder], check=True)

    def lines(self):
        """Their names, and the ends of each."""
        return [(each.line, ("home", each.line), (each.name, "eth0")) for each in self._machines.values()]

    def switch_off(self, name, running):
        each = self[name]
        del self._machines[name]
        each.switch_off()
        running.forget(sshd(each))


def sshd(each):
    return servers.Server("sshd", each.name, each.name, ("/usr/sbin/sshd", "-D", "-e", "-f",
                                                         servers.CONFIG / "ssh/sshd_config"), each.address, 22)
