"""GeoJSON from standard input: an SVG file, and a picture of characters to standard output."""
import html
import json
import math
import sys

WIDTH, COLUMNS, ROWS = 640, 72, 30  # of the drawing, and at most of the characters
FILLS = ["#8dd3c7", "#ffffb3", "#bebada", "#fb8072", "#80b1d3", "#fdb462", "#b3de69", "#fccde5", "#bc80bd", "#ccebc5"]


def parts_of(geometry):
    kind, shape = geometry["type"], geometry["coordinates"]
    if kind in ("Polygon", "MultiLineString"):
        return shape
    if kind == "MultiPolygon":
        return [ring for polygon in shape for ring in polygon]
    return [shape] if kind == "LineString" else []


features = [(feature["properties"], parts_of(feature["geometry"]))
            for feature in json.load(sys.stdin)["features"] if feature["geometry"]]
points = [point for _, parts in features for part in parts for point in part]
if not points:
    sys.exit("nothing to draw")
left, right = min(p[0] for p in points), max(p[0] for p in points) + 1e-9
bottom, top = min(p[1] for p in points), max(p[1] for p in points) + 1e-9
stretch = 1 / max(0.2, math.cos(math.radians((bottom + top) / 2)))  # degrees of longitude are shorter away from the equator
scale = WIDTH / (right - left)
height = (top - bottom) * scale * stretch

with open(sys.argv[1], "w", encoding="utf-8") as svg:
    svg.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="-4 -4 {WIDTH + 8} {height + 8:.0f}">\n')
    for number, (values, parts) in enumerate(features):
        path = " ".join("M" + " ".join(f"{(p[0] - left) * scale:.1f},{(top - p[1]) * scale * stretch:.1f}" for p in part)
                        for part in parts)
        title = html.escape(", ".join(f"{name} {value}" for name, value in values.items()))
        svg.write(f'<path d="{path}" fill="{FILLS[number % len(FILLS)]}" fill-rule="evenodd" stroke="#444" '
                  f'stroke-width="0.6"><title>{title}</title></path>\n')
    svg.write("</svg>\n")


def holds(parts, x, y):
    inside = False
    for part in parts:
        for (x1, y1), (x2, y2) in zip((p[:2] for p in part), (p[:2] for p in part[1:])):
            if (y1 <= y) != (y2 <= y) and x1 + (y - y1) * (x2 - x1) / (y2 - y1) > x:
                inside = not inside
    return inside


boxes = [(min(p[0] for part in parts for p in part), max(p[0] for part in parts for p in part)) for _, parts in features]
shape = (top - bottom) * stretch / (right - left) / 2  # rows a column: a character is twice as high as wide
columns = max(1, min(COLUMNS, int(ROWS / shape)))
rows = max(1, round(columns * shape))
step = (right - left) / columns
for row in range(rows):
    y = top - (row + 0.5) * (top - bottom) / rows
    line = ""
    for column in range(columns):
        x = left + (column + 0.5) * step
        here = [number for number, (_, parts) in enumerate(features)
                if boxes[number][0] <= x <= boxes[number][1] and holds(parts, x, y)]
        line += "abcdefghijklmnopqrstuvwxyz"[here[0] % 26] if here else " "
    print(line.rstrip())
for number, (values, _) in enumerate(features[:26]):
    print(f"  {'abcdefghijklmnopqrstuvwxyz'[number]} {next(iter(values.values()), '')}", end="\n" if number % 3 == 2 else "")
print()
