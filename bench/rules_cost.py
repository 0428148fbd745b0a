#!/usr/bin/env python3
"""Counts the samples that one evaluation of the alert rules reads in a real Prometheus on loopback.

Usage: bench/rules_cost.py PROMETHEUS [HOSTS]. PROMETHEUS is the folder of Prometheus' programs.
Makes the series of HOSTS hosts (50) with 12 drives of 20 attributes each, scraped every 15 s, and
what the recording rules have kept of them. One drive in twenty shows all signs: it has lost data, is
worn and hot, and has failed its last self-test. One in a hundred is failing. Prints the samples of
each rule, and the sum for 500 hosts.
"""
import json
import os
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.parse
import urllib.request

DRIVES = 12
ATTRIBUTES = [177, 190, 194, 202, 231, 232, 233, *range(1, 14)]  # all that the rules name, and others
RULES = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                     "../examples/alerts/smartprobe.rules.yml")
ADDRESS = "127.0.0.1:19090"


def write_series(out, hosts, end):
    """Writes the samples up to `end` (seconds), one metric after the other."""
    def metric(name, labelsets, seconds, step, value=1):
        out.write(f"# TYPE {name} gauge\n")
        for labels in labelsets:
            for when in range(end - seconds, end + 1, step):
                out.write(f"{name}{{{labels}}} {value} {when}\n")

    host = [f'job="node",instance="h{h}"' for h in range(hosts)]
    drive = [f'{labels},device="/dev/rsd{chr(97 + d)}",product="DISK",serial="{labels[-3:-1]}{d}"'
             for labels in host for d in range(DRIVES)]
    state = [f'{labels},state="{state}"' for labels in drive for state in ("pending", "uncorrectable")]
    reallocated = [f'{labels},state="reallocated"' for labels in drive]
    error = [f'{labels},kind="{kind}"' for labels in drive for kind in ("uncorrectable", "end-to-end")]
    health = [f'{labels},grade="{"OK" if d % 20 else "caution"}"' for d, labels in enumerate(drive)]
    attribute = [f'{labels},id="{i}",name="n",kind="life-span"' for labels in drive for i in ATTRIBUTES]
    failing, poor = drive[::100], drive[::20]
    reached = ([f'{labels},id="5",name="n",kind="pre-failure"' for labels in failing] +
               [f'{labels},id="1",name="n",kind="life-span"' for labels in poor])
    recent, minute, hour, day = 600, 60, 3600, 86400
    metric("up", host, 2 * hour, 15)
    metric("smartprobe_drives_read", host, 3 * hour, 15, DRIVES)
    metric("node_textfile_mtime_seconds", [f'{h},file="smartprobe.prom"' for h in host], recent, 15, end)
    metric("smartprobe_drive_info", drive, recent, 15)
    metric("smartprobe_drive_threshold_exceeded", drive, recent, 15, 0)
    metric("smartprobe_drive_read_failed", drive, recent, 15, 0)
    metric("smartprobe_drive_temperature_celsius", drive, recent, 15, 40)
    metric("smartprobe_drive_temperature_limit_celsius", drive, recent, 15, 80)
    metric("smartprobe_drive_wear_ratio", drive, recent, 15, 0.03)
    metric("smartprobe_drive_self_test_failed", drive, recent, 15, 0)
    metric("smartprobe_drive_health", health, recent, 15)
    metric("smartprobe_drive_sectors", state + reallocated, recent, 15, 0)
    metric("smartprobe_drive_errors", error, recent, 15, 0)
    metric("smartprobe_attribute_reached", attribute, recent, 15, 0)
    metric("smartprobe_attribute_value", attribute, recent, 15, 100)
    metric("smartprobe:drive_present", drive, 7 * day, 15 * minute)
    metric("smartprobe:sectors_reallocated", reallocated, 7 * day, 15 * minute, 0)
    metric("smartprobe:sectors_unreadable", state, 7 * day, 15 * minute, 0)
    metric("smartprobe:report_time", host, 30 * day, 15 * minute, end)
    metric("smartprobe:drive_failing", failing, 26 * hour, 3 * minute)
    metric("smartprobe:attribute_reached", reached, 26 * hour, 3 * minute)
    metric("smartprobe:losses", [f'{labels},{loss}="uncorrectable"' for labels in poor
                                 for loss in ("state", "kind")], 3 * hour, 3 * minute)
    for sign in ("drive_hot", "drive_worn", "self_test_failed"):
        metric(f"smartprobe:{sign}", poor, 3 * hour, 3 * minute)
    out.write("# EOF\n")


def get(path, **parameters):
    url = f"http://{ADDRESS}/api/v1/{path}?{urllib.parse.urlencode(parameters)}"
    with urllib.request.urlopen(url) as answer:
        return json.load(answer)["data"]


def wait_for_rules():
    while True:
        try:
            return [rule for group in get("rules")["groups"] for rule in group["rules"]]
        except urllib.error.URLError:
            time.sleep(0.5)


def main(programs, hosts):
    with tempfile.TemporaryDirectory() as work:
        end = int(time.time())
        series = os.path.join(work, "series")
        with open(series, "w", encoding="utf-8") as out:
            write_series(out, hosts, end)
        data = os.path.join(work, "data")
        subprocess.run([os.path.join(programs, "promtool"), "tsdb", "create-blocks-from", "openmetrics",
                        series, data], check=True, stdout=subprocess.DEVNULL)
        config = os.path.join(work, "prometheus.yml")
        with open(config, "w", encoding="utf-8") as out:
            out.write(f"global: {{evaluation_interval: 1d}}\nrule_files: ['{RULES}']\n")
        with subprocess.Popen([os.path.join(programs, "prometheus"), f"--config.file={config}",
                               f"--storage.tsdb.path={data}", "--storage.tsdb.retention.time=60d",
                               f"--web.listen-address={ADDRESS}", "--query.timeout=5m",
                               "--query.max-samples=200000000"],
                              stderr=subprocess.DEVNULL) as prometheus:
            try:
                total = 0
                for rule in wait_for_rules():
                    stats = get("query", query=rule["query"], time=end, stats="all")["stats"]
                    samples = stats["samples"]["totalQueryableSamples"]
                    total += samples
                    print(f"{samples:>10} {rule['name']}")
                print(f"{total * 500 // hosts:>10} all of them, on 500 hosts")
            finally:
                prometheus.terminate()


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 50)
