#!/usr/bin/env python3
"""velmorak-view gives nothing to other origins, hosts and users of no token, and nothing outside of results folders.

usage: check_view_security.py VELMORAK-VIEW
"""

import concurrent.futures
import json
import os
import pathlib
import socket
import sys

from view_server import View, began, ended

RUN = "run-1-0.jsonl"


def results_in(view):
    results = view.folder / "doc.results"
    (results / "sub").mkdir(parents=True)
    (results / "picture.svg").write_text("<svg xmlns='http://www.w3.org/2000/svg'><script>alert(1)</script></svg>")
    (results / "sub" / "a <b> & \u00e4.txt").write_text("inside")
    (view.folder / "secret.txt").write_text("secret")
    (results / "link.txt").symlink_to(view.folder / "secret.txt")
    (results / "away").symlink_to(view.folder)
    os.mkfifo(results / "fifo")
    view.announce(1, began(view.folder / "doc.zedra", results), ended())
    return results


def check_token(view):
    assert view.get("")[0] == 200 and view.get("api/runs")[0] == 200
    token = view.root.strip("/")
    assert len(token) >= 32
    for path in ("/", "/api/runs", "/" + token[:-1] + "/", "/" + token + "x/", "/" + token, "/" + token[:-1] + "0/api/runs",
                 "//" + token + "/", "/file/%s/picture.svg" % RUN, "/style.css"):
        status, _, body = view.ask(path)
        assert status == 403 and b"refused" in body, (path, status, body)


def check_origins(view):
    own = "127.0.0.1:%d" % view.port
    assert view.get("api/runs", headers={"Origin": "http://" + own, "Sec-Fetch-Site": "same-origin"})[0] == 200
    assert view.get("", headers={"Sec-Fetch-Site": "none"})[0] == 200
    for headers in ({"Origin": "https://evil.example"}, {"Origin": "null"}, {"Origin": "http://127.0.0.1:1"},
                    {"Origin": "http://localhost:%d" % view.port}, {"Sec-Fetch-Site": "cross-site"},
                    {"Sec-Fetch-Site": "same-site"}):
        assert view.get("api/runs", headers=headers)[0] == 403, headers
    for host in ("evil.example", "evil.example:%d" % view.port, "127.0.0.1", "127.0.0.1:1", "[::1]:%d" % view.port):
        assert view.get("api/runs", host=host)[0] == 403, host
    for method in ("POST", "PUT", "DELETE", "OPTIONS", "PATCH"):
        assert view.get("api/runs", method=method, headers={"Content-Length": "0"})[0] in (400, 403, 413), method
    headers = view.get("")[1]
    assert "Access-Control-Allow-Origin" not in headers
    assert "default-src 'none'" in headers["Content-Security-Policy"] and "frame-ancestors 'none'" in headers["Content-Security-Policy"]


def check_only_this_machine(view):
    with open("/proc/net/tcp") as table:
        listening = [line.split()[1] for line in table if line.split()[3] == "0A"]
    assert "0100007F:%04X" % view.port in listening and "00000000:%04X" % view.port not in listening


def check_paths(view):
    def file(name):
        return view.get("file/%s/%s" % (RUN, name))
    status, headers, body = file("picture.svg")
    assert status == 200 and b"<svg" in body and headers["Content-Security-Policy"].startswith("sandbox;"), headers
    assert headers["X-Content-Type-Options"] == "nosniff"
    assert file("sub/a%20%3Cb%3E%20%26%20%C3%A4.txt")[2] == b"inside"
    for name in ("../secret.txt", "..%2fsecret.txt", "%2e%2e/secret.txt", "%2e%2e%2fsecret.txt", "sub/../../secret.txt",
                 "sub/../picture.svg", "/etc/passwd", "%2fetc%2fpasswd", "link.txt", "away/secret.txt", "fifo", "sub", "", ".",
                 "picture.svg/", "picture.svg%00.txt", "..%5csecret.txt", "nothing.txt"):
        status, _, body = file(name)
        assert status in (400, 404) and b"secret" not in body and b"root:" not in body, (name, status, body)
    for run in ("run-2-0.jsonl", "..", "%2e%2e", "folder", "run-1-0.jsonl%2f..", "messages-1.jsonl"):
        status, _, body = view.get("file/%s/secret.txt" % run)
        assert status in (400, 404) and b"secret" not in body, (run, status, body)
    names = [each["name"] for each in json.loads(view.get("api/files?run=" + RUN)[2])]
    assert names == ["picture.svg", "sub/a <b> & \u00e4.txt"], names
    for run in ("..%2f..%2fsecret.txt", "%2fetc%2fpasswd", "run-1-0.jsonl.progress", "watch.lock", ""):
        assert view.get("api/events?run=" + run)[0] == 404, run


def check_linked_results(view):
    """A results folder that is a link, and an announcement that is one."""
    (view.folder / "other.results").symlink_to(view.folder)
    view.announce(2, began("x", view.folder / "other.results"), ended())
    assert view.get("file/run-2-0.jsonl/secret.txt")[0] == 404
    assert json.loads(view.get("api/files?run=run-2-0.jsonl")[2]) == []
    (view.runtime / "velmorak" / "run-3-0.jsonl").symlink_to(view.folder / "secret.txt")
    assert view.get("api/events?run=run-3-0.jsonl")[0] == 404
    view.announce(4, {"event": "began", "results": "relative"}, "text", [], None)
    assert view.get("file/run-4-0.jsonl/secret.txt")[0] == 404 and view.get("api/runs")[0] == 200


def check_live_and_jobs(view):
    """The page shows the files of a run that goes on and of jobs: neither links nor other files."""
    runtime = view.runtime / "velmorak"
    (runtime / "run-1-0.jsonl.live").symlink_to(view.folder / "secret.txt")
    for run in (RUN, "..%2f..%2fsecret.txt", "%2fetc%2fpasswd", "look", "messages-1.jsonl", ""):
        status, _, body = view.get("api/live?run=" + run)
        assert status == 404 and b"secret" not in body, (run, status, body)
    job = view.folder / "job"
    (job / "parts").mkdir(parents=True)
    (job / "nodes").mkdir()
    (job / "plan.json").write_text("{}")
    (job / "nodes" / "00001.json").symlink_to(view.folder / "secret.txt")
    for number, folder in enumerate((str(job), str(view.folder), "relative", "/etc", None, ["x"])):
        (runtime / ("job-%d.jsonl" % number)).write_text(json.dumps({"event": "job", "time": 0, "folder": folder}) + "\n")
    (runtime / "job-77.jsonl").symlink_to(view.folder / "secret.txt")
    status, _, body = view.get("api/jobs")
    assert status == 200 and b"secret" not in body, body
    jobs = json.loads(body)
    assert [each["folder"] for each in jobs] == [str(job)] and jobs[0]["error"] != "" and jobs[0]["parts"] == [], jobs
    assert view.get("api/events?run=job-0.jsonl")[0] == 404
    for path in runtime.glob("job-*"):
        path.unlink()


def check_many_requests(view):
    with concurrent.futures.ThreadPoolExecutor(1000) as pool:
        answers = list(pool.map(lambda _: view.get("api/runs?version=0")[0], range(1000)))
    assert answers == [200] * 1000, {status: answers.count(status) for status in set(answers)}


def check_clients_that_never_read(view, results):
    """And such that never ask, or ask endlessly."""
    (results / "big.txt").write_bytes(b"x" * (40 << 20))
    held = []
    for _ in range(8):
        client = socket.create_connection(("127.0.0.1", view.port))
        client.sendall(b"GET %sfile/%s/big.txt HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n" % (view.root.encode(), RUN.encode(), view.port))
        held.append(client)
        held.append(socket.create_connection(("127.0.0.1", view.port)))
    assert view.get("api/runs")[0] == 200
    endless = socket.create_connection(("127.0.0.1", view.port))
    try:
        endless.sendall(b"GET /" + b"a" * (1 << 20))
    except OSError:
        pass
    assert view.get("api/runs")[0] == 200
    for client in (*held, endless):
        client.close()
    check_memory(view)
    (results / "big.txt").unlink()


def check_memory(view, measure="VmRSS"):
    status = (pathlib.Path("/proc") / str(view.process.pid) / "status").read_text()
    kilobytes = next(int(line.split()[1]) for line in status.splitlines() if line.startswith(measure))
    assert kilobytes < 60 * 1024, "the server uses %d kB" % kilobytes


def check_memory_of_answers(view):
    """What the answers of one thread took is free for those of the others."""
    message = {"event": "message", "time": 0, "text": "x" * 1000}
    view.announce(9, began("/x/long.zedra", view.folder), *[message] * 2000, ended())
    for _ in range(200):
        status, _, body = view.get("api/events?run=run-9-0.jsonl&from=0")
        assert status == 200 and len(body) > 2000000, (status, len(body))
    check_memory(view, "VmHWM")


def main():
    with View(sys.argv[1]) as view:
        view.start()
        check_memory_of_answers(view)
    with View(sys.argv[1]) as view:
        results = results_in(view)
        view.start()
        check_token(view)
        check_origins(view)
        check_only_this_machine(view)
        check_paths(view)
        check_linked_results(view)
        check_live_and_jobs(view)
        check_many_requests(view)
        check_clients_that_never_read(view, results)
    return 0


if __name__ == "__main__":
    sys.exit(main())
