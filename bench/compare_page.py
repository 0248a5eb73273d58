"""The measurements as tables, the plot of them, and the page that holds both."""

import os
import re
import sqlite3
import subprocess
from datetime import date

from compare_data import MEGABYTE
from compare_measure import MeasuringFailed
from compare_targets import MEGABYTE_KIB, targets_of
from compare_variants import VARIANTS

PLOT = """
set terminal svg size 780,500 font "Helvetica,Arial,sans-serif,13" background "#ffffff"
set output "{output}"
set logscale xy
set grid linecolor "#d0d0d0"
set key top left Left reverse
set xlabel "size of the directory (MB)"
set ylabel "time (s)"
{data}
plot {curves}
"""
COMPARISON_HEAD = (
    "", "time", "÷ bare C", "CPU", "÷ bare C", "memory MB", "read MB", "written MB", "from disk MB", "to disk MB"
)
IDLE_HEAD = ("directory at first", "compaction", "left MB", "time", "read MB", "÷ left", "written MB", "÷ left")
LATENCY_HEAD = ("database", "journal", "compaction", "no pass p99", "p50", "p99", "longest", "rows", "run")
COLOURS = ("#005f9e", "#2a9d4a", "#7fc97f", "#222222", "#888888", "#c05000", "#a0307f")


def table(head, rows):
    """Of Markdown: the first column to the left, figures to the right."""
    lines = [head, ["---"] + ["---:"] * (len(head) - 1), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def megabytes(count):
    return f"{count / MEGABYTE:,.1f}"


def comparison_row(variant, figures):
    usage = figures.usage
    return [
        variant,
        f"{usage.wall_s:.3f} s",
        f"{figures.wall_ratio:.2f}",
        f"{usage.cpu_s:.3f} s",
        f"{figures.cpu_ratio:.2f}",
        f"{usage.memory_kib / MEGABYTE_KIB:.1f}",
        megabytes(usage.asked_read),
        megabytes(usage.asked_written),
        megabytes(usage.disk_read),
        megabytes(usage.disk_written),
    ]


def comparison_text(comparison):
    rows = [comparison_row(variant, comparison.figures[variant]) for variant in VARIANTS]
    return (
        f"### {comparison.size_mb} MB\n\n"
        f"{megabytes(comparison.bytes_before)} MB with {comparison.rows_before:,} rows; after the pass "
        f"{megabytes(comparison.bytes_after)} MB with {comparison.rows_after:,} rows, the same ones for every way.\n\n"
        f"{table(COMPARISON_HEAD, rows)}"
    )


def targets_text(comparisons):
    rows = [
        [each.text, each.size, each.wanted, f"{each.value:.2f}{each.unit}", "met" if each.met else "**not met**"]
        for each in targets_of(comparisons)
    ]
    return "### Targets\n\n" + table(["target", "size", "wanted", "measured", ""], rows)


def idle_text(passes):
    rows = [
        [
            f"{each.size_mb} MB",
            "always" if each.compacted else "left out",
            megabytes(each.bytes_left),
            f"{each.usage.wall_s:.3f} s",
            *(
                text
                for count in (each.usage.asked_read, each.usage.asked_written)
                for text in (megabytes(count), f"{count / each.bytes_left:.1f}")
            ),
        ]
        for each in passes
    ]
    return "### The idle pass\n\n" + table(IDLE_HEAD, rows)


def latency_text(latencies):
    rows = [
        [
            f"{each.size_mb} MB",
            each.journal_mode,
            "always (before)" if each.compacted else "left out (after)",
            *(f"{value:,.1f}" for value in (each.quiet_p99_ms, each.p50_ms, each.p99_ms, each.longest_ms)),
            f"{each.rows:,}",
            f"{each.run_s:.2f} s" if each.cleaned else "gave up: locked",
        ]
        for each in latencies
    ]
    return table(LATENCY_HEAD, rows)


def advice_text(answers):
    return "\n\n".join(one_answer(question, outcomes) for question, outcomes in answers)


def one_answer(question, outcomes):
    rows = [
        [
            name,
            f"{question.choices[name].rows:,}",
            f"{outcome.insert_s * 1000:,.0f} ms",
            f"{outcome.bytes / MEGABYTE:.2f} MB",
            f"{outcome.expiry_s * 1000:,.1f} ms",
        ]
        for name, outcome in outcomes.items()
    ]
    head = [question.title.lower(), "rows", "inserting them", "file", "expiring a tenth"]
    return f"### {question.title}\n\n{table(head, rows)}\n\n{question.follows}"


def first_match(pattern, file):
    with open(file, encoding="utf-8") as text:
        found = re.search(pattern, text.read(), re.MULTILINE)
    return found[1] if found else "unknown"


def output_of(*words):
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout.strip()


def machine_text(work, rounds):
    """What the figures depend on, and nothing that names the machine."""
    model = first_match(r"^model name\s*: (.+)$", "/proc/cpuinfo")
    memory = int(first_match(r"^MemTotal:\s*(\d+)", "/proc/meminfo")) / MEGABYTE_KIB / 1000
    file_system = output_of("findmnt", "-n", "-o", "FSTYPE", "-T", work).split()[-1]
    sqlite = output_of("sqlite3", "--version").split()[0]
    facts = [
        f"{model}, {os.cpu_count()} processors, {memory:.0f} GB of memory",
        f"file system {file_system}, Linux {os.uname().release}",
        f"SQLite {sqlite}; that of Python is {sqlite3.sqlite_version}",
        f"{date.today()}, medians of {rounds} round{'s' if rounds > 1 else ''}",
    ]
    return "\n".join(f"- {fact}" for fact in facts)


def draw(comparisons, output):
    """Time against size, one line for each way."""
    data, curves = [], []
    for number, variant in enumerate(VARIANTS):
        points = [f"{each.bytes_before / MEGABYTE} {each.figures[variant].usage.wall_s}" for each in comparisons]
        data.append("\n".join([f"$way{number} << END", *points, "END"]))
        curves.append(f'$way{number} with linespoints lw 2 lc rgb "{COLOURS[number]}" title "{variant}"')
    script = PLOT.format(output=output, data="\n".join(data), curves=", ".join(curves))
    done = subprocess.run(["gnuplot"], input=script, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise MeasuringFailed(f"gnuplot failed: {done.stderr.strip()}")


def write_part(file, name, text):
    """Puts the text between the page's two marks of that name."""
    begin, end = f"<!-- {name}: measured -->", f"<!-- {name}: end -->"
    pattern = re.compile(f"{re.escape(begin)}.*?{re.escape(end)}", re.DOTALL)
    page = file.read_text(encoding="utf-8")
    if not pattern.search(page):
        raise MeasuringFailed(f"{file.name} has no place for the part {name}: it needs {begin} and {end}")
    file.write_text(pattern.sub(lambda _: f"{begin}\n\n{text}\n\n{end}", page), encoding="utf-8")
