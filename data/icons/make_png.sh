#!/bin/sh
# Renders the application's icon and its projects' at the sizes that desktops look for (needs rsvg-convert).
set -e
cd "$(dirname "$0")"
mkdir -p png
for size in 16 22 24 32 48 64 128 256; do
    rsvg-convert -w "$size" -h "$size" zibcdburner.svg -o "png/zibcdburner-$size.png"
    rsvg-convert -w "$size" -h "$size" ../../packaging/icons/application-x-zib-project.svg \
        -o "../../packaging/icons/application-x-zib-project-$size.png"
done
