"""The events and the names of their notifications, worked out from the dictionary without the program that writes the
module."""
import os
import re

LAST_OWN = 5  # up to here the notifications are in KESTRIX-RAID-MIB


def read_events(path=None):
    """Event identifiers and names, as the dictionary's source has them."""
    with open(path or os.environ["KXRA_EVENTS"]) as source:
        runs = re.findall(r'\{(\d+), ((?:\s*"[^"]*")+)\}', source.read())
    return {int(first) + i: name for first, names in runs
            for i, name in enumerate("".join(re.findall(r'"([^"]*)"', names)).rstrip(",").split(","))}


def notification_name(number, event):
    words = [word.capitalize() for word in event.split("_")]
    name = "kxrEvent" + "".join(words)
    if len(name) <= 64:
        return name
    while len("kxrEvent" + "".join(words) + str(number)) > 64:
        words.pop()
    return "kxrEvent" + "".join(words) + str(number)


def full_name(number, event):
    """With the module that it stands in, as the tools print it."""
    module = "KESTRIX-RAID-MIB" if number <= LAST_OWN else "KESTRIX-RAID-EVENTS-MIB"
    return module + "::" + notification_name(number, event)
