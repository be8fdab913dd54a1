#!/usr/bin/env bash
# Draws a Shape dataset of areas or lines: an SVG file, and a rough picture in the terminal.
#   examples/draw.sh country.shp country.svg
# ogr2ogr, another program, reads the dataset; what it cannot read is not drawn.
set -euo pipefail
ogr2ogr -f GeoJSON /vsistdout/ "$1" | python3 "$(dirname "$0")/draw.py" "$2"
