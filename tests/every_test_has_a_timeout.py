#!/usr/bin/env python3
"""Fails naming every CTest test of the build that has no TIMEOUT of its own.
Usage: every_test_has_a_timeout.py CTEST BUILD_FOLDER"""
import json
import subprocess
import sys

listing = subprocess.run([sys.argv[1], "--show-only=json-v1"], cwd=sys.argv[2], check=True,
                         capture_output=True, text=True).stdout
tests = json.loads(listing)["tests"]
missing = [t["name"] for t in tests
           if not any(p["name"] == "TIMEOUT" and float(p["value"]) > 0 for p in t.get("properties", []))]
for name in missing:
    print(f"no TIMEOUT: {name}")
print(f"{len(tests) - len(missing)} of {len(tests)} tests have a TIMEOUT")
sys.exit(1 if missing or not tests else 0)
