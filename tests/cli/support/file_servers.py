# SPDX-License-Identifier: GPL-2.0-or-later
"""Real servers to fetch files from, in the box of an OLT: in.tftpd and vsftpd."""
import os
import re
import shutil
import signal
from pathlib import Path

from receivers import Receiver

SERVERS = "/run/olt/deps/file-servers/sbin"
TFTP_PORT, FTP_PORT = 69, 21
FTP_CONFIGURATION = """\
listen=NO
listen_ipv6=YES
background=NO
local_enable=YES
anonymous_enable=NO
check_shell=NO
delay_failed_login=0
secure_chroot_dir=/run/vsftpd
pam_service_name=vsftpd
seccomp_sandbox=NO
"""


class FileServer(Receiver):
    """A server of IPv4 and IPv6 clients whose files lie in `folder`."""

    tables = ("udp", "udp6")

    def __init__(self, olt, name, command, port):
        self.folder = olt.state / "log" / name  # /var/log/NAME in the box
        self.folder.mkdir()
        self.folder.chmod(0o755)
        super().__init__(olt, name, command, [port])

    def _is_listening(self):
        assert self._process.poll() is None, self.path(self.name + ".err").read_text()
        table = "".join(Path(f"/proc/{self._olt.holder.pid}/net/{file}").read_text() for file in self.tables)
        return all(re.search(f":{port:04X} ", table) for port in self._ports)

    def put(self, name, content):
        file = self.folder / name
        file.write_bytes(content)
        file.chmod(0o644)

    def suspend(self):
        """Lets requests wait without an answer until resume()."""
        for child in self._children():
            os.kill(child, signal.SIGSTOP)

    def resume(self):
        for process in [*self._children(), self._process.pid]:  # nsenter stops with its child
            os.kill(process, signal.SIGCONT)

    def _children(self):
        return map(int, Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children").read_text().split())

    def stop(self):
        super().stop()
        shutil.rmtree(self.folder)


class Tftpd(FileServer):
    def __init__(self, olt):
        super().__init__(olt, "tftpd", [f"{SERVERS}/in.tftpd", "--foreground", "--user", "daemon", "--secure",
                                        "/var/log/tftpd"], TFTP_PORT)


class Vsftpd(FileServer):
    """users: the password of each user that it lets in."""

    tables = ("tcp", "tcp6")

    def __init__(self, olt, users):
        log = olt.state / "log"
        (log / "vsftpd.conf").write_text(FTP_CONFIGURATION)
        (log / "vsftpd.pam").write_text("auth required pam_unix.so\naccount required pam_unix.so\n")
        (log / "vsftpd.passwd").write_text("".join(f"{user}:x:60001:1::/var/log/vsftpd:/bin/sh\n" for user in users))
        prepare = ("install -m 0644 /var/log/vsftpd.pam /etc/pam.d/vsftpd && mkdir -p /run/vsftpd && "
                   "chown root:root /var/log/vsftpd.conf && cat /var/log/vsftpd.passwd >> /etc/passwd && "
                   "sed 's/:.*/:*:20000::::::/' /var/log/vsftpd.passwd >> /etc/shadow && chpasswd -c SHA256")
        olt.exec("sh", "-c", prepare, input="".join(f"{user}:{word}\n" for user, word in users.items()), check=True)
        super().__init__(olt, "vsftpd", [f"{SERVERS}/vsftpd", "/var/log/vsftpd.conf"], FTP_PORT)
