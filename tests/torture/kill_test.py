# SPDX-License-Identifier: GPL-3.0-or-later
"""Kills a log at a random instant, again and again: what is left is a whole header and whole records, the frames that
were sent from the first on, and none is missing that was sent longer before than a limit. Then the same call runs again.
Usage: kill_test.py QORVIEW-CLI [--minutes M | --rounds N] [--seed S] [--limit SECONDS]"""
import os
import random
import select
import signal
import termios
import threading
import time

from torture import Run, arguments, frame, play, records, wait_for

NAMINGS = (("--name", "run.raw"), (), ("--name", "run.raw", "--every", "00:01"), ("--every", "00:01"))


class Sender(threading.Thread):
    """Frames at random pace, in bursts and in pieces; knows when each had been handed over."""

    def __init__(self, line, port, dice):
        super().__init__()
        self.line, self.port, self.dice, self.times, self.stopped = line, port, dice, [], threading.Event()

    def hand_over(self, data):
        """False when the line was full until the sender was stopped: nobody reads it any more."""
        while data and not self.stopped.is_set():
            if select.select([], [self.line.master], [], 0.05)[1]:
                data = data[os.write(self.line.master, data[:512]):]
        return not data

    def run(self):
        os.set_blocking(self.line.master, False)
        while not self.stopped.is_set():
            for _ in range(self.dice.choice((1, 1, 2, 20))):
                data = frame(len(self.times) + 1, self.port)
                middle = self.dice.randrange(len(data))
                if not (self.hand_over(data[:middle]) and self.hand_over(data[middle:])):
                    return
                self.times.append(time.monotonic())
            self.stopped.wait(self.dice.expovariate(50))


def stop(senders):
    for sender in senders:
        sender.stopped.set()
        if sender.ident:
            sender.join()


def play_one(seed):
    dice = random.Random(seed)
    ports, naming = dice.choice((1, 1, 3)), dice.choice(NAMINGS)
    run = Run(options.cli, ports, naming)
    senders = [Sender(line, port, random.Random(dice.random())) for port, line in enumerate(run.lines)]
    try:
        if dice.random() < 0.1:  # in the middle of its begin
            select.select([], [], [], dice.uniform(0, 0.15))
        else:
            wait_for(run.logs, "the log's begin")
            for sender in senders:
                sender.start()
            select.select([], [], [], dice.uniform(0, 1.5))
        killed = time.monotonic()
        run.process.send_signal(signal.SIGKILL)
        run.process.communicate()
        stop(senders)
        return judge(run, senders, killed) or starts_again(run, naming)
    finally:
        stop(senders)
        run.remove()


def judge(run, senders, killed):
    found = []
    for path in run.logs():
        frames, fault = records(path.read_bytes())
        if fault:
            return f"{path.name}: {fault}"
        found += frames
    for sender in senders:
        numbers = [number for port, number in found if port == sender.port]
        if numbers != list(range(1, len(numbers) + 1)):
            gap = next(i for i, number in enumerate(numbers, 1) if number != i)
            return f"port {sender.port}: frame {numbers[gap - 1]} stands in the place of {gap}"
        late = [round(killed - sent, 4) for sent in sender.times[len(numbers):] if sent < killed - limit]
        if late:
            return f"port {sender.port}: {len(late)} frames are missing, sent up to {late[0]} s before"
    return ""


def starts_again(run, naming):
    """With the same names; what has the first one's may be replaced."""
    for line in run.lines:
        termios.tcflush(line.slave, termios.TCIOFLUSH)
    run.start((*naming, "--overwrite"))
    wanted = {(port, 1 << 20) for port in range(len(run.lines))}

    def works():
        for port, number in wanted:
            run.lines[port].send(frame(number, port))
        found = {record for path in run.logs() for record in records(path.read_bytes())[0]}
        return wanted <= found or run.process.poll() is not None

    wait_for(works, "another log")
    status, errors = run.end()
    return f"the next run ended with {status}\n{errors}" if status else ""


options = arguments(__doc__)
limit = options.limit or (0.1 if options.minutes or options.rounds else 1)
first = int(time.time())
seeds = [options.seed] if options.seed is not None else range(first, first + options.rounds) if options.rounds \
    else range(first, first + (int(options.minutes * 600) if options.minutes else 24))
play("kills", seeds, play_one, options, 60)
