"""Looks at kslsim through the standard library's XML-RPC client, which shares no line with it."""

import json
import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.error
import urllib.request
import xmlrpc.client

PROGRAM = ""
BOUND = 30  # seconds


class Simulator:
    def __init__(self, *options):
        self.process = subprocess.Popen(
            [PROGRAM, "--port", "0", "--control-port", "0", *options], stdout=subprocess.PIPE, text=True)
        self.port = int(self.process.stdout.readline())
        self.control = int(self.process.stdout.readline().split()[1])
        self.rpc = xmlrpc.client.ServerProxy(f"http://127.0.0.1:{self.port}/KSL", allow_none=True)

    def do(self, **step):
        request = urllib.request.Request(f"http://127.0.0.1:{self.control}/api/do", json.dumps(step).encode())
        with urllib.request.urlopen(request, timeout=BOUND) as answer:
            return json.load(answer)

    def get(self, path):
        with urllib.request.urlopen(f"http://127.0.0.1:{self.control}{path}", timeout=BOUND) as answer:
            return json.load(answer)

    def end(self, how=signal.SIGTERM):
        self.rpc("close")()
        if self.process.poll() is None:
            self.process.send_signal(how)
        try:
            return self.process.wait(BOUND)
        finally:
            self.process.kill()
            self.process.stdout.close()


def until(condition):
    end = time.monotonic() + BOUND
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("did not happen")
        time.sleep(0.01)


class Peer(unittest.TestCase):
    def setUp(self):
        self.simulator = Simulator()
        self.addCleanup(self.simulator.end)
        self.rpc = self.simulator.rpc

    def test_registration_and_events(self):
        data = self.rpc.topscreen.init("TopScreen", "1.5.0")
        self.assertEqual(set(data), {"ID", "Locale", "Language", "DecimalSeparator", "ThousandSeparator",
                                     "ThousandGrouping"})
        self.assertIsNone(self.rpc.game.popEvents(data["ID"]))
        self.simulator.do(do="add", level={"CurrentPot": 2 ** 40})
        self.simulator.do(do="game", event="exited")
        events = self.rpc.game.popEvents(data["ID"])
        self.assertEqual([event["eventID"] for event in events], [110, 105])
        self.assertEqual(events[0]["context"][0]["CurrentPot"], 2 ** 40)
        self.assertIsNone(events[1]["context"])
        self.assertIsNone(self.rpc.game.popEvents(data["ID"]))

    def test_unknown_client(self):
        answer = self.rpc.game.popEvents(12345)
        self.assertEqual(answer["faultCode"], -1)
        self.assertIsInstance(answer["faultString"], str)

    def test_packages(self):
        client = self.rpc.topscreen.init("TopScreen", "1.5.0")["ID"]
        event = {"eventID": 1, "context": None}
        self.assertEqual(self.rpc.game.pushEvents(client, 0, [event, event]), 2)
        self.assertEqual(self.rpc.game.pushEvents(client, 0, [event]), 2)
        self.assertEqual(self.rpc.game.pushEvents(client, 1, [event]), 1)

    def test_all_twelve_methods_answer(self):
        rpc = self.rpc
        client = rpc.topscreen.init("TopScreen", "1.5.0")["ID"]
        self.simulator.do(do="game", event="loaded", ID=7, Name="Fruits", Type=4)
        self.assertEqual(len(rpc.game.popEvents(client)), 1)
        self.assertEqual(rpc.game.pushEvents(client, 0, []), 0)
        self.assertEqual(rpc.game.setParam(client, "Speed", {"fast": True}), {"fast": True})
        self.assertEqual(rpc.game.getParam(client, "Speed"), {"fast": True})
        self.assertEqual(rpc.game.setCounter(client, "Spins", 5), 5)
        self.assertEqual(rpc.game.shiftCounter(client, "Spins", -7), -2)
        self.assertEqual(rpc.game.getCounter(client, "Spins"), -2)
        self.assertEqual(rpc.system.volume(30), 30)
        self.assertEqual(rpc.system.volume(), 30)
        self.assertEqual(rpc.system.denomination(10), 10)
        self.assertEqual(rpc.system.denomination(), 10)
        self.assertEqual(len(rpc.platform.state()), 13)
        self.assertIs(rpc.game.bye(client), True)
        self.assertEqual(rpc.game.popEvents(client)["faultCode"], -1)

    def test_method_that_was_taken_away(self):
        self.simulator.do(do="service", set={"Unsupported": ["system.volume"]})
        self.assertEqual(self.rpc.system.volume()["faultCode"], -4)

    def test_several_clients_at_once(self):
        clients = [self.rpc.topscreen.init("TopScreen", "1.5.0")["ID"] for _ in range(20)]
        self.assertEqual(len(set(clients)), 20)
        seen = {}

        def poll(client):
            rpc = xmlrpc.client.ServerProxy(f"http://127.0.0.1:{self.simulator.port}/KSL", allow_none=True)
            events = seen[client] = []
            end = time.monotonic() + BOUND
            while len(events) < 30 and time.monotonic() < end:
                events += [event["context"] for event in rpc.game.popEvents(client) or []]
            rpc("close")()

        threads = [threading.Thread(target=poll, args=(client,)) for client in clients]
        for thread in threads:
            thread.start()
        for number in range(30):
            self.simulator.do(do="event", id=107, value=number)
        for thread in threads:
            thread.join()
        self.assertEqual(seen, {client: list(range(30)) for client in clients})

    def test_state(self):
        self.simulator.do(do="set", state={"CurrentBet": 5, "Instructions": ["Grüße & <mehr>"], "ExtraData": {"a": 1}})
        state = self.rpc.platform.state()
        self.assertEqual(state["CurrentBet"], 5)
        self.assertEqual(state["Instructions"], ["Grüße & <mehr>"])
        self.assertEqual(state["ExtraData"], {"a": 1})
        self.assertEqual(len(state), 13)

    def test_amounts_travel_as_i8(self):
        self.simulator.do(do="add")
        body = xmlrpc.client.dumps((), "platform.state").encode()
        request = urllib.request.Request(f"http://127.0.0.1:{self.simulator.port}/KSL", body,
                                         {"Content-Type": "text/xml"})
        with urllib.request.urlopen(request, timeout=BOUND) as answer:
            text = answer.read().decode()
        self.assertEqual(text.count("<i8>"), 3 + 5)

    def test_faults_of_the_library(self):
        with self.assertRaises(xmlrpc.client.Fault) as caught:
            self.rpc.nobody.knows()
        self.assertEqual(caught.exception.faultCode, -506)
        with self.assertRaises(xmlrpc.client.Fault):
            self.rpc.topscreen.init("only a name")

    def test_down_and_up(self):
        client = self.rpc.topscreen.init("TopScreen", "1.5.0")["ID"]
        self.simulator.do(do="down")

        def refused():
            try:
                socket.create_connection(("127.0.0.1", self.simulator.port), BOUND).close()
                return False
            except ConnectionRefusedError:
                return True

        until(refused)
        self.assertFalse(self.simulator.get("/api/state")["listening"])
        self.simulator.do(do="up")
        until(lambda: not refused())
        self.assertEqual(self.rpc.game.popEvents(client)["faultCode"], -1)


class Program(unittest.TestCase):
    def test_ends_cleanly_by_both_signals(self):
        for how in (signal.SIGTERM, signal.SIGINT):
            simulator = Simulator()
            simulator.rpc.platform.state()
            self.assertEqual(simulator.end(how), 0)

    def test_log_file_has_a_line_for_each_request(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.path.join(folder, "log")
            simulator = Simulator("--log", file)
            simulator.rpc.topscreen.init("TopScreen", "1.5.0")
            simulator.rpc.game.popEvents(1)
            simulator.rpc.game.popEvents(2)
            simulator.end()
            with open(file, encoding="utf-8") as lines:
                entries = [json.loads(line) for line in lines]
        self.assertEqual([entry["method"] for entry in entries],
                         ["topscreen.init", "game.popEvents", "game.popEvents"])
        self.assertEqual(entries[0]["params"], ["TopScreen", "1.5.0"])
        self.assertEqual(entries[1]["client"], 1)
        self.assertIsNone(entries[1]["answer"])
        self.assertEqual(entries[2]["answer"]["faultCode"], -1)
        self.assertTrue(all("time" in entry for entry in entries))

    def test_plays_a_scenario(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump([{"at": 0, "do": "add"}, {"at": 50, "do": "pot", "id": 0, "value": 77}], file)
            file.flush()
            simulator = Simulator("--scenario", file.name)
            self.addCleanup(simulator.end)
            until(lambda: [level["CurrentPot"] for level in simulator.rpc.platform.state()["JackpotData"]] == [77])

    def test_names_the_place_of_a_mistake(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            file.write('[\n {"at": 0, "do": "dance"}\n]')
            file.flush()
            for extra in ([], ["--check"]):
                done = subprocess.run([PROGRAM, "--port", "0", "--control-port", "0", "--scenario", file.name, *extra],
                                      capture_output=True, text=True, timeout=BOUND)
                self.assertEqual(done.returncode, 2)
                self.assertEqual(done.stderr, f"{file.name}:2:18: there is no such step\n")

    def test_starts_as_the_command_line_says(self):
        simulator = Simulator("--levels", "2", "--seed", "3", "--set", "DemoMode=true", "--set",
                              "JackpotErrorString=12", "--set", "IntegrityCheckData=a text", "--do",
                              '{"do": "add", "level": {"Name": "MINE"}}', "--do", '{"do": "down", "ms": 1}')
        self.addCleanup(simulator.end)
        state = simulator.get("/api/state")["state"]
        self.assertEqual([level["Name"] for level in state["JackpotData"]], ["GOLD", "SILVER", "MINE"])
        self.assertEqual((state["DemoMode"], state["JackpotErrorString"], state["IntegrityCheckData"]),
                         (True, "12", "a text"))
        pot = state["JackpotData"][0]["CurrentPot"]
        until(lambda: simulator.get("/api/state")["state"]["JackpotData"][0]["CurrentPot"] > pot)

    def test_wrong_command_line_is_said(self):
        for arguments, complaint in ((["--set", "DemoMode"], "--set DemoMode: expected FIELD=VALUE\n"),
                                     (["--set", "Demo=1"], '--set Demo=1: unknown field "Demo"\n'),
                                     (["--set", "MinBet=x"], "--set MinBet=x: expected a number of 64 bits\n"),
                                     (["--set", 'ExtraData={"a":' + "[" * 60000],
                                      f'--set ExtraData={{"a":{"[" * 60000}: expected an object\n'),
                                     (["--set", b"JackpotErrorString=\xff"],
                                      "--set JackpotErrorString=\udcff: expected a text in UTF-8\n"),
                                     (["--do", '{"do":\n"dance"}'], "--do: 2:1: there is no such step\n"),
                                     (["--do", '{"do": "win", "id": 0}'], '--do: 1:21: no level has the "Id" 0\n')):
            done = subprocess.run([PROGRAM, "--check", *arguments], capture_output=True, text=True, timeout=BOUND,
                                  errors="surrogateescape")
            self.assertEqual((done.returncode, done.stderr), (2, complaint))
        for arguments in (["--levels", "5"], ["--port", "x"], ["--odd"], ["--seed", "-1", "--levels", "1"],
                          ["--path", "KSL"], ["--path", "/a b"], ["--path", "/a?b"]):
            done = subprocess.run([PROGRAM, "--check", *arguments], capture_output=True, text=True, timeout=BOUND)
            self.assertGreater(done.returncode, 100)
            self.assertIn(arguments[0], done.stderr)

    def test_records_and_replays(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.path.join(folder, "recording")
            simulator = Simulator("--levels", "1")
            self.addCleanup(simulator.end)
            recorder = subprocess.Popen(
                [PROGRAM, "--port", "0", "--record", file, "--wire", "--upstream",
                 f"http://127.0.0.1:{simulator.port}/KSL"],
                stdout=subprocess.PIPE, text=True)
            self.addCleanup(recorder.stdout.close)
            self.addCleanup(recorder.kill)
            port = int(recorder.stdout.readline())
            self.assertEqual(recorder.stdout.readline(), f"recording {file}\n")
            rpc = xmlrpc.client.ServerProxy(f"http://127.0.0.1:{port}/KSL", allow_none=True)
            client = rpc.topscreen.init("TopScreen", "1.5.0")["ID"]
            state = rpc.platform.state()
            simulator.do(do="event", id=107, value=3)
            until(lambda: any(event["eventID"] == 107 for event in rpc.game.popEvents(client) or []))
            rpc("close")()
            recorder.send_signal(signal.SIGTERM)
            self.assertEqual(recorder.wait(BOUND), 0)
            with open(file, encoding="utf-8") as lines:
                entries = [json.loads(line) for line in lines][1:]
            self.assertEqual(xmlrpc.client.loads(entries[0]["call"]), (("TopScreen", "1.5.0"), "topscreen.init"))
            self.assertEqual(xmlrpc.client.loads(entries[0]["body"])[0][0]["ID"], client)
            player = Simulator("--replay", file, "--at-once")
            self.addCleanup(player.end)
            self.assertEqual(player.rpc.topscreen.init("TopScreen", "1.5.0")["ID"], client)
            self.assertEqual(player.rpc.platform.state(), state)
            until(lambda: any(event["eventID"] == 107 for event in player.rpc.game.popEvents(client) or []))

    def test_wrong_recording_is_said(self):
        with tempfile.NamedTemporaryFile("w") as file:
            file.write('{"what":"kslsim recording","version":1}\n{"at":"x"}')
            file.flush()
            done = subprocess.run([PROGRAM, "--replay", file.name, "--check"], capture_output=True, text=True,
                                  timeout=BOUND)
            self.assertEqual((done.returncode, done.stderr),
                             (2, f"{file.name}:2:7: expected milliseconds, 0 or more\n"))
        done = subprocess.run([PROGRAM, "--record", "/x/y", "--upstream", "nowhere"], capture_output=True, text=True,
                              timeout=BOUND)
        self.assertEqual((done.returncode, done.stderr), (2, "--upstream: expected http://HOST:PORT/PATH\n"))
        for arguments in (["--record", "/x/y"], ["--upstream", "http://a/b"], ["--wire"], ["--at-once"], ["--seed", "3"],
                          ["--replay", __file__, "--levels", "1"], ["--replay", __file__, "--set", "DemoMode=true"],
                          ["--record", "/x/y", "--upstream", "http://a/b", "--window", "a"],
                          ["--record", "/x/y", "--upstream", "http://a/b", "--levels", "1"],
                          ["--record", "/x/y", "--upstream", "http://a/b", "--control-port", "0"]):
            done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=BOUND)
            self.assertGreater(done.returncode, 100, arguments)
            self.assertIn(arguments[0], done.stderr)

    def test_scenario_goes_on_after_the_command_line(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            file.write('[{"at": 0, "do": "win", "id": 3}]')
            file.flush()
            for levels, code in ((3, 2), (4, 0)):
                done = subprocess.run([PROGRAM, "--check", "--levels", str(levels), "--scenario", file.name],
                                      capture_output=True, text=True, timeout=BOUND)
                self.assertEqual(done.returncode, code, done.stderr)

    def test_full_disk_is_said_once(self):
        with tempfile.TemporaryFile("w+") as complaints:
            process = subprocess.Popen([PROGRAM, "--port", "0", "--control-port", "0", "--log", "/dev/full"],
                                       stdout=subprocess.PIPE, stderr=complaints, text=True)
            self.addCleanup(process.stdout.close)
            self.addCleanup(process.kill)
            rpc = xmlrpc.client.ServerProxy(f"http://127.0.0.1:{int(process.stdout.readline())}/KSL", allow_none=True)
            for _ in range(3):
                self.assertEqual(len(rpc.platform.state()), 13)
            rpc("close")()
            process.terminate()
            self.assertEqual(process.wait(BOUND), 0)
            complaints.seek(0)
            self.assertEqual(complaints.read(), "kslsim: the log cannot be written any more\n")

    def test_second_recorder_leaves_the_file_of_the_first_alone(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.path.join(folder, "recording")
            with open(file, "w", encoding="utf-8") as earlier:
                earlier.write("what was there\n")
            simulator = Simulator()
            self.addCleanup(simulator.end)
            done = subprocess.run([PROGRAM, "--port", str(simulator.port), "--record", file, "--upstream",
                                   f"http://127.0.0.1:{simulator.port}/KSL"], capture_output=True, text=True,
                                  timeout=BOUND)
            self.assertEqual((done.returncode, done.stderr), (1, f"kslsim: port {simulator.port} is taken\n"))
            with open(file, encoding="utf-8") as earlier:
                self.assertEqual(earlier.read(), "what was there\n")
            for target in ("", folder, "/dev/full"):
                done = subprocess.run([PROGRAM, "--port", "0", "--record", target, "--upstream",
                                       f"http://127.0.0.1:{simulator.port}/KSL"], capture_output=True, text=True,
                                      timeout=BOUND)
                self.assertEqual((done.returncode, done.stderr), (1, f"kslsim: cannot write {target}\n"))

    def test_taken_port_is_said(self):
        simulator = Simulator()
        self.addCleanup(simulator.end)
        done = subprocess.run([PROGRAM, "--port", str(simulator.port)], capture_output=True, text=True, timeout=BOUND)
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"port {simulator.port} is taken", done.stderr)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
