#!/usr/bin/env python3
"""Fails unless a page that capdump wrote is what people may pass on.

  check_page.py PAGE FINDINGS VALUES

It is well-formed, runs and fetches nothing, its links lead somewhere; the sentence of each finding in
FINDINGS (of capdump --json) is on it, and none of the VALUES, which stand behind tabs, is.
"""
import json
import re
import sys
import xml.etree.ElementTree as tree

page_file, findings_file, values_file = sys.argv[1:]
raw = open(page_file, encoding="utf-8").read()
page = tree.fromstring(raw)
problems = []

text = "".join(page.itertext())
for line in open(findings_file, encoding="utf-8"):
    finding = json.loads(line)
    if finding["kind"] == "finding" and finding["sentence"] not in text:
        problems.append("no finding: " + finding["sentence"])
for line in open(values_file, encoding="utf-8"):
    for value in line.rstrip("\n").split("\t")[4:]:
        if len(value) > 3 and value in raw:
            problems.append("a value of a data set: " + value)

known = set("html head meta title style body h1 h2 h3 p a span ul li section article footer table "
            "thead tbody tr th td svg text line path rect pattern".split())
ids = {element.get("id") for element in page.iter()}
for element in page.iter():
    if element.tag not in known:
        problems.append("an element " + element.tag)
    for name, value in element.attrib.items():
        if name == "src" or name.startswith("on"):
            problems.append(f"an attribute {name}")
        if name == "href" and value[1:] not in ids:
            problems.append("a link that leads nowhere: " + value)
if re.search(r"https?:|url\(\s*[^#]|@import", raw):
    problems.append("it asks for something from elsewhere")

for problem in problems:
    print(f"check_page: {page_file}: {problem}", file=sys.stderr)
sys.exit(bool(problems))
