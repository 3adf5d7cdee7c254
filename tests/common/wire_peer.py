#!/usr/bin/env python3
"""A platform service out of Python's standard library, for the tests of the link.

Prints its port on the first line and serves until its standard input is closed. It knows nothing of the C++
XML-RPC library, so what both sides understand is XML-RPC and not one library's habit.
"""
import sys
import threading
import xmlrpc.client
from xmlrpc.server import SimpleXMLRPCRequestHandler, SimpleXMLRPCServer


class I8(int):
    """An integer that travels as <i8>; the standard library by itself stops at 32 bits."""


def dump_i8(_marshaller, value, write):
    write("<value><i8>%d</i8></value>" % int(value))


xmlrpc.client.Marshaller.dispatch[I8] = dump_i8

CLIENT = 7
pushed = []


def init(name, version):
    if (name, version) != ("TopScreen", "1.5.0"):
        return {"faultCode": -3, "faultString": "unexpected %r %r" % (name, version)}
    return {"ID": CLIENT, "Locale": "de_DE.UTF-8", "DecimalSeparator": ",", "ThousandSeparator": ".",
            "ThousandGrouping": 3, "Language": "de", "More": [1, 2]}


def pop_events(client):
    if client != CLIENT:
        return {"faultCode": -1, "faultString": "not registered"}
    return [{"eventID": 105, "context": None},
            {"eventID": 104, "context": {"current": I8(5000000000), "min": I8(-1), "max": I8(2**63 - 1)}},
            {"eventID": 103, "context": "gr\u00fc\u00df <dich>"},
            {"eventID": 102, "context": True},
            {"eventID": 106, "context": ["one", "two"]},
            {"eventID": 107, "context": 3}]


def push_events(client, number, events):
    pushed.append([client, number, events])
    return len(events)


def get_param(client, *params):
    if params == ("pushed",):
        return repr(pushed)
    return repr([client, *params])


def state():
    level = {"Name": "Gold", "Id": 1, "Status": "", "Mode": 0, "CurrentPot": I8(123456789012), "MinPot": I8(0),
             "MaxPot": I8(2**63 - 1), "MinBet": I8(-(2**63)), "MaxBet": I8(5), "DecimalPlaces": 2,
             "ShowCurrencySign": True, "Currency": "\u20ac", "NumWins": 0, "LastWinData": "", "TimeFrom": "",
             "TimeTo": ""}
    return {"IntegrityCheckData": "", "ActiveGame": {"ID": 42, "Name": "Fruit", "Type": 4}, "IsLoading": False,
            "ShowingPaytable": 1, "LanguageMessages": ["a"], "DemoMode": False, "Instructions": [],
            "CurrentBet": I8(250), "MinBet": I8(1), "MaxBet": I8(6000000000), "ExtraData": None,
            "JackpotData": [level, dict(level, Id=2)], "JackpotErrorString": ""}


class Handler(SimpleXMLRPCRequestHandler):
    rpc_paths = ("/KSL",)


def main():
    server = SimpleXMLRPCServer(("127.0.0.1", 0), Handler, logRequests=False, allow_none=True)
    for name, function in {"topscreen.init": init, "game.popEvents": pop_events, "game.pushEvents": push_events,
                           "game.getParam": get_param, "platform.state": state}.items():
        server.register_function(function, name)
    print(server.server_address[1], flush=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    sys.stdin.read()


if __name__ == "__main__":
    main()
