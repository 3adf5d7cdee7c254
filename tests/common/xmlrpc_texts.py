#!/usr/bin/env python3
"""The wire form as Python's standard library has it, for the tests of the link.

    xmlrpc_texts.py answers FILE    writes a recording for kslsim whose answers are made by xmlrpc.client
    xmlrpc_texts.py calls FILE      prints the calls of a recording made with --wire, as xmlrpc.client reads them

It knows nothing of the C++ XML-RPC library, so what both sides understand is XML-RPC and not one library's habit.
"""
import json
import sys
import xmlrpc.client


class I8(int):
    """An integer that travels as <i8>; the standard library by itself stops at 32 bits."""


def dump_i8(_marshaller, value, write):
    write("<value><i8>%d</i8></value>" % int(value))


xmlrpc.client.Marshaller.dispatch[I8] = dump_i8

CLIENT = 7
LEVEL = {"Name": "Gold", "Id": 1, "Status": "", "Mode": 0, "CurrentPot": I8(123456789012), "MinPot": I8(0),
         "MaxPot": I8(2**63 - 1), "MinBet": I8(-(2**63)), "MaxBet": I8(5), "DecimalPlaces": 2,
         "ShowCurrencySign": True, "Currency": "\u20ac", "NumWins": 0, "LastWinData": "", "TimeFrom": "",
         "TimeTo": ""}
EVENTS = [{"eventID": 105, "context": None},
          {"eventID": 104, "context": {"current": I8(5000000000), "min": I8(-1), "max": I8(2**63 - 1)}},
          {"eventID": 103, "context": "gr\u00fc\u00df <dich>"},
          {"eventID": 102, "context": True},
          {"eventID": 106, "context": ["one", "two"]},
          {"eventID": 107, "context": 3}]

# Method, parameters by which the simulator tells the clients apart, answers in their order.
ANSWERS = [
    ("topscreen.init", [], [{"ID": CLIENT, "Locale": "de_DE.UTF-8", "DecimalSeparator": ",", "ThousandSeparator": ".",
                             "ThousandGrouping": 3, "Language": "de", "More": [1, 2]}]),
    ("game.popEvents", [CLIENT], [EVENTS]),
    ("game.pushEvents", [CLIENT], [2, 1]),
    ("game.getParam", [CLIENT], ["caf\u00e9 & <more>"]),
    ("platform.state", [],
     [{"IntegrityCheckData": "", "ActiveGame": {"ID": 42, "Name": "Fruit", "Type": 4}, "IsLoading": False,
       "ShowingPaytable": 1, "LanguageMessages": ["a"], "DemoMode": False, "Instructions": [],
       "CurrentBet": I8(250), "MinBet": I8(1), "MaxBet": I8(6000000000), "ExtraData": None,
       "JackpotData": [LEVEL, dict(LEVEL, Id=2)], "JackpotErrorString": ""}]),
    ("system.volume", [], [xmlrpc.client.Fault(1, 'method "system.volume" is not supported')]),
]


def text_of(answer):
    """The text of a method's response."""
    value = answer if isinstance(answer, xmlrpc.client.Fault) else (answer,)
    return xmlrpc.client.dumps(value, methodresponse=True, allow_none=True)


def write_answers(file):
    lines = [{"what": "kslsim recording", "version": 1}]
    for method, params, answers in ANSWERS:
        lines += [{"at": 0, "ms": 0, "method": method, "params": params, "status": 200, "body": text_of(answer)}
                  for answer in answers]
    with open(file, "w", encoding="utf-8") as out:
        out.writelines(json.dumps(line) + "\n" for line in lines)


def print_calls(file):
    sys.stdout.reconfigure(encoding="utf-8")
    with open(file, encoding="utf-8") as lines:
        next(lines)
        for line in lines:
            params, method = xmlrpc.client.loads(json.loads(line)["call"])
            print(method, list(params))


if __name__ == "__main__":
    {"answers": write_answers, "calls": print_calls}[sys.argv[1]](sys.argv[2])
