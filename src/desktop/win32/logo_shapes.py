#!/usr/bin/env python3
"""logo_shapes.py SVG HEADER: writes the curves of a drawing as a table of C++.

It knows as much of SVG as our drawings use: groups, paths of absolute M, L, H, V, C and Z, a transform that is a row of
translate, scale and skewX, and the attributes fill, stroke, stroke-width and stroke-linecap.
"""

import math
import re
import sys
import xml.etree.ElementTree as tree

NAMESPACE = "{http://www.w3.org/2000/svg}"
START, LINE, BEZIER, CLOSE = 6, 2, 4, 1  # the system's kinds of points, and its mark at the last of a closed figure
IDENTITY = (1, 0, 0, 1, 0, 0)


def times(first, second):
    a, b, c, d, e, f = first
    g, h, i, j, k, m = second
    return (a * g + c * h, b * g + d * h, a * i + c * j, b * i + d * j, a * k + c * m + e, b * k + d * m + f)


def matrix_of(transform):
    matrix = IDENTITY
    for name, arguments in re.findall(r"(\w+)\(([^)]*)\)", transform):
        values = [float(value) for value in re.split(r"[\s,]+", arguments.strip())]
        if name == "translate":
            step = (1, 0, 0, 1, values[0], values[1])
        elif name == "scale":
            step = (values[0], 0, 0, values[1], 0, 0)
        elif name == "skewX":
            step = (1, 0, math.tan(math.radians(values[0])), 1, 0, 0)
        else:
            sys.exit(f"{name} is not a transform that is known here")
        matrix = times(matrix, step)
    return matrix


def points_of(path):
    points, kinds = [], []
    x = y = 0.0
    for letter, arguments in re.findall(r"([A-Za-z])([^A-Za-z]*)", path):
        values = [float(value) for value in re.findall(r"-?[\d.]+", arguments)]
        if letter in "ML":
            corners, kind = list(zip(values[::2], values[1::2])), LINE
        elif letter == "H":
            corners, kind = [(value, y) for value in values], LINE
        elif letter == "V":
            corners, kind = [(x, value) for value in values], LINE
        elif letter == "C":
            corners, kind = list(zip(values[::2], values[1::2])), BEZIER
        elif letter == "Z":
            kinds[-1] |= CLOSE
            continue
        else:
            sys.exit(f"{letter} is not a step of a path that is known here")
        points += corners
        kinds += [START if letter == "M" and index == 0 else kind for index in range(len(corners))]
        x, y = corners[-1]
    return points, kinds


def shapes_in(element, inherited, matrix):
    style = {**inherited, **element.attrib}
    matrix = times(matrix, matrix_of(element.get("transform", "")))
    if element.tag == NAMESPACE + "path":
        yield style, matrix, *points_of(style["d"])
    for child in element:
        yield from shapes_in(child, {key: value for key, value in style.items() if key != "transform"}, matrix)


def number(value):
    return f"{value:.6f}F"


def write_shape(name, shape):
    style, matrix, points, kinds = shape
    stroked = style.get("stroke", "none") != "none"
    corners = ", ".join(f"{{{round(x)}, {round(y)}}}" for x, y in points)
    table = f"inline constexpr std::array<POINT, {len(points)}> {name}Points{{{{{corners}}}}};\n"
    table += f"inline constexpr std::array<BYTE, {len(kinds)}> {name}Types{{{', '.join(map(str, kinds))}}};\n"
    entry = "    Shape{{" + ", ".join(map(number, matrix)) + "}, 0x" + style["stroke" if stroked else "fill"][1:]
    entry += f", {round(float(style['stroke-width'])) if stroked else 0}"
    entry += f", {'true' if style.get('stroke-linecap') == 'round' else 'false'}, {name}Points, {name}Types}},\n"
    return table, entry


def main(source, target):
    root = tree.parse(source).getroot()
    left, top, width, height = (float(value) for value in root.get("viewBox").split())
    shapes = list(shapes_in(root, {"fill": "#000000"}, (1, 0, 0, 1, -left, -top)))
    written = [write_shape(f"kShape{index}", shape) for index, shape in enumerate(shapes)]
    with open(target, "w") as header:
        header.write(HEAD)
        header.writelines(table for table, _ in written)
        header.write(f"inline constexpr float kLogoWidth = {number(width)};\n")
        header.write(f"inline constexpr float kLogoHeight = {number(height)};\n")
        header.write("inline constexpr std::array kLogo{\n")
        header.writelines(entry for _, entry in written)
        header.write("};\n}\n")


HEAD = """#pragma once
#include <array>
#include <cstdint>
#include <span>
#include "platform/windows/system.h"
namespace vento::desktop::win32::art {
struct Shape {
    XFORM matrix;
    std::uint32_t colour;
    std::uint32_t strokeWidth;  ///< 0: filled
    bool roundCaps;
    std::span<const POINT> points;
    std::span<const BYTE> types;
};
"""

main(*sys.argv[1:])
