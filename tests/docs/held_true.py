#!/usr/bin/env python3
"""Holds the documentation to what is true: its links lead somewhere, its commands run, its figures were measured.

usage: held_true.py path/to/vintrel FREI0R_FOLDER

Links: every relative one in every .md, and its heading.
Commands: blocks fenced as ```sh run, those of one file one after the other in a folder of their own with small
pictures and a clip in it.  Blocks that need more than that are fenced as ```sh.  A block fenced as ```toml NAME is that file in the folder.
Figures: a number with a unit of speed, in prose, is in bench/record.json when rounded as it is; or the paragraph ends
with a comment that says where it was measured: <!-- measured: COMMAND, MACHINE -->.  Tables and code are not prose.
"""
import concurrent.futures
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), '../..'))
sys.path.insert(0, os.path.join(ROOT, 'bench'))
sys.dont_write_bytecode = True
import table  # noqa: E402


def documents():
    for folder, folders, files in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in ('build', 'out', 'node_modules') and name[0] != '.']
        yield from (os.path.join(folder, name) for name in files if name.endswith('.md'))


def blocks(text):
    """(line number, fence or None, text) of each code block and each paragraph."""
    fence, start, lines = None, 1, []
    for number, line in enumerate(text.split('\n') + [''], 1):
        mark = re.match(r'```(.*)', line)
        if mark or (fence is None and not line.strip()):
            if lines or fence is not None:
                yield start, fence, '\n'.join(lines)
            fence = mark.group(1).strip() if mark and fence is None else None
            start, lines = number + 1, []
        else:
            lines.append(line)


def slug(heading):
    return re.sub(r'[^\w\- ]', '', heading.lower()).replace(' ', '-')


def headings(path):
    with open(path) as file:
        return {slug(match) for match in re.findall(r'(?m)^#+ (.*)$', file.read())}


def wrong_links(path, text):
    for start, fence, block in blocks(text):
        for target in re.findall(r'\]\(([^)\s]+)\)', block) if fence is None else []:
            if re.match(r'[a-z]+:', target):
                continue
            file, _, anchor = target.partition('#')
            there = os.path.join(os.path.dirname(path), file) if file else path
            if not os.path.exists(there):
                yield start, f'there is no {target}'
            elif anchor and there.endswith('.md') and anchor not in headings(there):
                yield start, f'{target}: no such heading'


def measured(record):
    """Figures by unit."""
    figures = {'ns': [], 'ms': [], 'times': []}
    for section in record['sections']:
        unit, scale = ('ns', 1) if section['unit'].startswith('ns') else \
            ('ms', 1e-3) if section['unit'] == 'microseconds' else ('ms', 1)
        for row in section['rows']:
            figures[unit] += [row[name] * scale for name in ('reference', 'measured', 'drawing', 'floor') if name in row]
            figures['times'] += [row[name] for name in ('ratio', 'drawingToFloor') if name in row]
    return figures


NUMBER = r'\d[\d,]*(?:\.\d+)?'
FIGURE = re.compile(rf'((?:{NUMBER}(?: / | to | and | or |, ))*{NUMBER})[  ]?(ns|µs|ms|s|GB/s|MB/s|frames/s|times)(?![\w/])')


def wrong_figures(text, figures):
    for start, fence, block in blocks(text):
        if fence is not None or block.startswith(('|', '    ', '#')) or '<!-- measured:' in block:
            continue
        for numbers, unit in FIGURE.findall(block.replace('\n', ' ')):
            for number in re.findall(NUMBER, numbers):
                digits = len(number.partition('.')[2])
                value = float(number.replace(',', ''))
                if not any(round(figure, digits) == value for figure in figures.get(unit, ())):
                    yield start, f'{number} {unit} is not in bench/record.json; say after it <!-- measured: COMMAND, MACHINE -->'


def make_plates(folder, tool):
    # Small, and even also at half the size, as video wants it.
    for name in ('street.png', 'window.png'):
        subprocess.run(['ffmpeg', '-nostdin', '-v', 'error', '-i', os.path.join(ROOT, 'examples', name), '-vf',
                        'scale=480:272', name], cwd=folder, check=True)
    copy = lambda *options: subprocess.run(
        [tool, 'render', 'street.png', '--set', 'flakes=0', '-q', *options], cwd=folder, check=True)
    for name in ('other.png', 'photo.jpg', 'plate.tif', 'plate.png'):
        copy('-o', name)
    copy('-o', 'plate.####.png', '--frames', '8-12')
    for name in ('clip.mp4', 'shot.mov'):
        copy('-o', name, '--frames', '0-49')


def run_commands(text, tool, frei0r, plates):
    """The file's blocks, in a folder of its own; yields what went wrong."""
    commands = [(start, block) for start, fence, block in blocks(text) if fence == 'sh run']
    if not commands:
        return
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(plates, folder, dirs_exist_ok=True)
        os.makedirs(os.path.join(folder, 'build/release/cli'))
        os.symlink(tool, os.path.join(folder, 'build/release/cli/vintrel'))
        environment = os.environ | {'HOME': folder, 'PATH': os.path.dirname(tool) + ':' + os.environ['PATH'],
                                    'FREI0R_PATH': frei0r, 'MLT_FREI0R_PLUGIN_PATH': frei0r}
        environment.pop('XDG_CONFIG_HOME', None)
        for _, fence, block in blocks(text):
            if fence and fence.startswith('toml '):
                with open(os.path.join(folder, fence.split()[1]), 'w') as file:
                    file.write(block)
        for start, block in commands:
            done = subprocess.run(['bash', '-eu', '-c', block], cwd=folder, env=environment, capture_output=True, text=True,
                                  stdin=subprocess.DEVNULL)
            if done.returncode:
                yield start, f'exit code {done.returncode}:\n{block}\n{(done.stdout + done.stderr)[-1500:]}'


def check(path, tool, frei0r, plates, figures):
    with open(path) as file:
        text = file.read()
    wrong = [*wrong_links(path, text), *wrong_figures(text, figures), *run_commands(text, tool, frei0r, plates)]
    if os.path.relpath(path, ROOT) == 'docs/performance.md' and table.tables(RECORD) not in text:
        wrong.append((1, 'the tables are not those that bench/table.py prints of bench/record.json'))
    count = sum(fence == 'sh run' for _, fence, _ in blocks(text))
    return [f'{os.path.relpath(path, ROOT)}:{line}: {what}' for line, what in wrong], count


with open(table.RECORD) as file:
    RECORD = json.load(file)


def main():
    tool, frei0r = (os.path.abspath(argument) for argument in sys.argv[1:])
    with concurrent.futures.ThreadPoolExecutor(2) as pool, tempfile.TemporaryDirectory() as plates:
        make_plates(plates, tool)
        results = list(pool.map(lambda path: check(path, tool, frei0r, plates, measured(RECORD)), sorted(documents())))
    for wrong, _ in results:
        for line in wrong:
            print(line)
    commands = sum(count for _, count in results)
    print(f'{len(results)} documents, {commands} blocks of commands')
    if commands < 10:
        print('so few blocks of commands cannot be right')
        sys.exit(1)
    sys.exit(any(wrong for wrong, _ in results))


main()
