"""Independent witnesses for points that norvsolve reports: Debian's readers, each a process of its own.

`programs` is the folder of ampl_values and coin_reader, `path` an instance that is not compressed.
"""
import math
import subprocess

TOLERANCE = 1e-6  # absolute, relative to the larger side where that is above 1


def violation(value, lower, upper):
    """Relative to the larger side where that is above 1; infinite for what is no number."""
    worst = 0.0
    for excess, side in ((lower - value, lower), (value - upper, upper)):
        if not excess <= 0.0:
            worst = max(worst, excess / max(1.0, abs(value), abs(side)))
    return math.inf if math.isnan(value) else worst


def check_with_ampl(programs, path, result):
    """What the AMPL solver library has against the reported point, or an empty text."""
    levels = [variable["level"] for variable in result["variables"]]
    if not levels:
        return ""
    run = subprocess.run([programs / "ampl_values", path], capture_output=True, text=True,
                         input="".join(f"{level!r}\n" for level in levels), check=False)
    lines = [line.split() for line in run.stdout.splitlines()]
    values = [[math.nan if word == "error" else float(word) for word in line[1:]]
              for line in lines if line[0] == "values"]
    if run.returncode != 0 or len(values) != 1:
        return f"ampl_values {run.returncode}: {run.stderr}"
    sides = {kind: [[float(word) for word in line[1:]] for line in lines if line[0] == kind]
             for kind in ("variable", "row")}
    objective, rows = values[0][0], values[0][1:]
    findings = [(violation(objective, result["objective"], result["objective"]), "objective")]
    for j, (level, (lower, upper, _, discrete)) in enumerate(zip(levels, sides["variable"])):
        findings.append((violation(level, lower, upper), f"variable {j}"))
        findings.append((abs(level - round(level)) if discrete else 0.0, f"variable {j}"))
    findings += [(violation(value, *bounds), f"row {i}")
                 for i, (value, bounds) in enumerate(zip(rows, sides["row"]))]
    findings += [(violation(value, 1.0, 1.0), f"logical row {i}")
                 for i, value in enumerate(rows[len(sides["row"]):])]
    worst, what = max(findings)
    return f"AMPL solver library: {what} by {worst:g}" if worst > TOLERANCE else ""


def check_with_coin(programs, path, answer):
    """What the independent reader of .mps files has against the answer, or an empty text."""
    run = subprocess.run([programs / "coin_reader", "check", path, answer], cwd=answer.parent,
                         capture_output=True, text=True, check=False)
    return "" if run.returncode == 0 else f"checker {run.returncode}: {run.stdout}"


def objection(programs, path, result, answer):
    """What a witness has against `result`, whose JSON text is the file `answer`; empty: nothing."""
    if path.suffix == ".mps":
        return check_with_coin(programs, path, answer)
    return check_with_ampl(programs, path, result)
