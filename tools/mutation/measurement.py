"""Which mutants are taken, and how they are dealt to the scratch copies."""
import random
import threading

GOLDEN_RATIO = 0.6180339887498949


def draws(mutations, seed):
    """All mutations in the order in which they are taken. Lines come as the multiples of the golden
    ratio fall on them, which spreads any number of draws evenly; then one of the line's."""
    generator = random.Random(seed)
    lines = {}
    for mutation in mutations:
        lines.setdefault((mutation.path, mutation.line), []).append(mutation)
    lines = list(lines.values())
    nb_left = len(mutations)
    position = generator.random()
    while nb_left > 0:
        position = (position + GOLDEN_RATIO) % 1.0
        line = lines[int(position * len(lines))]
        if line:
            yield line.pop(generator.randrange(len(line)))
            nb_left -= 1


class Measurement:
    """Deals draws to the scratch copies. The sample is the first `nb_wanted` mutants that compile
    to something else, in the order of the draws, so it does not depend on who is faster."""

    def __init__(self, chosen, nb_wanted, programs):
        self.chosen = chosen
        self.nb_wanted = nb_wanted
        self.programs = programs
        self.verdicts = []  # (mutation, verdict) of the sample
        self.nb_replaced = {"does not compile": 0, "equivalent": 0}
        self.nb_running = 0
        self.has_failed = False  # a worker has ended before its time
        self.condition = threading.Condition()

    def next(self):
        with self.condition:
            while (len(self.verdicts) + self.nb_running >= self.nb_wanted and self.nb_running > 0
                   and not self.has_failed):
                self.condition.wait()
            if self.has_failed or len(self.verdicts) >= self.nb_wanted:
                return None
            mutation = next(self.chosen, None)
            self.nb_running += mutation is not None
            return mutation

    def order(self):
        """The programs that kill most in a second first."""
        return sorted(self.programs, key=lambda p: -(1 + p.nb_kills) / (0.2 + p.cpu_seconds))

    def note(self, mutation, verdict):
        with self.condition:
            self.nb_running -= 1
            if verdict.kind in self.nb_replaced:
                self.nb_replaced[verdict.kind] += 1
            else:
                self.verdicts.append((mutation, verdict))
            print(f"[{len(self.verdicts)}/{self.nb_wanted}] {verdict.kind:16} "
                  f"{verdict.seconds:5.1f} s  {mutation.path}:{mutation.line} {mutation.operator}  "
                  f"{verdict.by}", flush=True)
            self.condition.notify_all()

    def work(self, scratch):
        try:
            while (mutation := self.next()) is not None:
                self.note(mutation, scratch.judge(mutation, self.order()))
        except BaseException:
            with self.condition:
                self.has_failed = True
                self.condition.notify_all()
            raise

    def survivors(self):
        survived = [mutation for mutation, verdict in self.verdicts if verdict.kind == "survived"]
        return sorted(survived, key=lambda mutation: (mutation.path, mutation.start))
