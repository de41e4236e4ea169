#!/usr/bin/python3
"""The facetter's speed table: the fast clipper against the straightforward
one, Mesa's GLU tessellator and earcut (Debian's python3-mapbox-earcut, its
C++ core timed per call), all on the same rings in one run.

    ninja -C build bench_facet && bench/facet_table.py [build/bench/bench_facet]

Times are CPU milliseconds per polygon; the ratios are this facetter's time
over the anchor's (below 1: faster than the anchor).
"""
import json
import subprocess
import sys
import tempfile
import time

import mapbox_earcut
import numpy


def earcut_ms(ring):
    """Milliseconds per call of earcut on one ring, timed in a loop."""
    vertices = numpy.array(ring, dtype=numpy.float64).reshape(-1, 2)
    ends = numpy.array([len(vertices)], dtype=numpy.uint32)
    calls, start = 0, time.process_time()
    while True:
        mapbox_earcut.triangulate_float64(vertices, ends)
        calls += 1
        spent = time.process_time() - start
        if spent > 0.2 or calls >= 100000:
            return 1000 * spent / calls


def main():
    bench = sys.argv[1] if len(sys.argv) > 1 else "build/bench/bench_facet"
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([bench, f"--rings_out={folder}/rings.json"], check=True)
        with open(f"{folder}/rings.json") as f:
            rings = json.load(f)
        subprocess.run([bench, "--benchmark_format=json", f"--benchmark_out={folder}/times.json",
                        "--benchmark_out_format=json"], check=True, stdout=subprocess.DEVNULL)
        with open(f"{folder}/times.json") as f:
            runs = json.load(f)["benchmarks"]
    cpu = {}
    for run in runs:
        stem, variant = run["name"].rsplit("/", 1)
        cpu.setdefault(stem, {})[variant] = run["cpu_time"]  # in milliseconds
    print("| ring | corners | fast | straightforward | GLU | earcut | fast/GLU | fast/earcut |")
    print("|---|---:|---:|---:|---:|---:|---:|---:|")
    for stem, ring in rings.items():
        row = cpu.get(stem, {})
        fast, glu, earcut = row.get("fast"), row.get("glu"), earcut_ms(ring)
        straightforward = row.get("straightforward")
        cells = [stem, str(len(ring)), f"{fast:.4g}",
                 f"{straightforward:.4g}" if straightforward else "-", f"{glu:.4g}",
                 f"{earcut:.4g}", f"{fast / glu:.2f}", f"{fast / earcut:.2f}"]
        print("| " + " | ".join(cells) + " |", flush=True)


if __name__ == "__main__":
    main()
