#!/usr/bin/env python3
"""Runs a command beside a PostgreSQL server of its own.

    with_postgres.py COMMAND [ARGS...]

The server lives in a temporary directory, listens on a private socket only, and ends with the command. The command
finds it through PGHOST, PGUSER and PGDATABASE; ORV_POSTGRES_STOP is a shell command that stops it at once, as a
crash would, and ORV_POSTGRES_START one that starts it again. Without a server on this machine the exit value is 77, by which ctest knows a skipped test."""
import glob
import os
import pathlib
import pwd
import shlex
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77


def binaries():
    """The directory of initdb and pg_ctl, the newest version first."""
    found = sorted(glob.glob("/usr/lib/postgresql/*/bin/initdb"), key=lambda path: int(path.split("/")[4]), reverse=True)
    if found:
        return pathlib.Path(found[0]).parent
    path = shutil.which("initdb")
    return pathlib.Path(path).resolve().parent if path else None


def main():
    bin_dir = binaries()
    as_server = []  # the server refuses to run as root
    if os.geteuid() == 0:
        try:
            owner = pwd.getpwnam("postgres")
        except KeyError:
            owner = None
        if owner is None or shutil.which("runuser") is None:
            bin_dir = None
        as_server = ["runuser", "-u", "postgres", "--"]
    if bin_dir is None:
        print(f"skipped, there is no PostgreSQL server: {' '.join(sys.argv[1:])}")
        return SKIPPED
    home = pathlib.Path(tempfile.mkdtemp(prefix="orvpg"))
    if as_server:
        os.chown(home, owner.pw_uid, owner.pw_gid)
        os.chmod(home, 0o755)
    data, sockets = home / "data", home / "socket"
    control = as_server + [str(bin_dir / "pg_ctl"), "-D", str(data), "-w"]

    def server(*words):
        done = subprocess.run(list(words), cwd=home, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            log = home / "log"
            sys.exit(f"{' '.join(words)}\n{done.stdout}\n{log.read_text() if log.exists() else ''}")

    try:
        server(*as_server, "mkdir", str(sockets))
        server(*as_server, str(bin_dir / "initdb"), "-D", str(data), "-U", "orv", "-A", "trust", "-E", "UTF8", "--locale=C",
               "--no-sync")
        start = control + ["-l", str(home / "log"), "-o",
                           f"-k {sockets} -c listen_addresses='' -c fsync=off -c full_page_writes=off "
                           "-c shared_buffers=16MB", "start"]
        server(*start)
        stop = shlex.join(control + ["-m", "immediate", "stop"])
        environment = {**os.environ, "PGHOST": str(sockets), "PGUSER": "orv", "PGDATABASE": "postgres",
                       "ORV_POSTGRES_STOP": stop, "ORV_POSTGRES_START": shlex.join(start)}
        return subprocess.run(sys.argv[1:], env=environment).returncode
    finally:
        if (data / "postmaster.pid").exists():
            subprocess.run(control + ["-m", "immediate", "stop"], cwd=home, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
