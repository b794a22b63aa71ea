#!/usr/bin/env python3
"""Makes pictures of the README beside this file: the loop, a small one of each look, a sheet, a shot in shares, a frame
of ffmpeg.

usage: front.py path/to/vintrel FREI0R_FOLDER GALLERY

GALLERY is what ./run gallery has left, out/gallery.  Needs ffmpeg.  page.mjs beside it takes the page's pictures.
kdenlive.jpg is a photograph of a screen, taken by hand: Kdenlive 22.12, the street with the filter on it.
"""
import glob
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLES = os.path.join(HERE, '../../../examples')
STREET = os.path.join(EXAMPLES, 'street.png')

FIRST, FRAMES, FADE, RATE = 100, 40, 8, 24
# Half of the picture: of a whole one so small the snow could not be seen.
HALF = '960:540:800:300'


def ffmpeg(*words, **options):
    subprocess.run(['ffmpeg', '-nostdin', '-v', 'error', '-y', *words], check=True, **options)


def draw_loop(tool, folder):
    """Snow never comes back to where it was: the last frames fade into those before the first one."""
    last = FIRST + FADE + FRAMES - 1
    subprocess.run([tool, 'render', STREET, '--preset', 'heavy-snow', '-q', '-o', 'loop.####.png', '--frames', f'{FIRST}-{last}',
                    '--compression', 'zip:1'], check=True, cwd=folder)
    ffmpeg('-framerate', str(RATE), '-start_number', str(FIRST), '-i', 'loop.%04d.png', '-filter_complex',
           f'scale=720:405:flags=area,split[a][b];[a]trim=start_frame={FADE},setpts=PTS-STARTPTS[main];'
           f'[b]trim=end_frame={FADE},setpts=PTS-STARTPTS[head];'
           f'[main][head]xfade=duration={FADE / RATE}:offset={(FRAMES - FADE) / RATE}',
           '-loop', '0', '-c:v', 'libwebp_anim', '-quality', '20', '-compression_level', '6', os.path.join(HERE, 'snow.webp'),
           cwd=folder)


def draw_small(source, name, part, size):
    # What is transparent lies over a blue as of the evening sky.
    ffmpeg('-i', source, '-filter_complex', f'[0]format=rgba,split[a][b];[b]drawbox=c=0x1c2740:t=fill[sky];[sky][a]overlay=format=rgb,'
           f'crop={part},scale={size}:flags=area', '-frames:v', '1', '-q:v', '3', '-pix_fmt', 'yuvj444p', os.path.join(HERE, name + '.jpg'))


def draw_farm(tool, folder):
    """Each row of the sheet is the share of one task of an array job, by the job's own script."""
    shares = 4
    os.mkdir(os.path.join(folder, 'frames'))
    subprocess.run([tool, 'render', STREET, '-o', 'frames/snow.####.png', '--frames', '0-479x30', '--proxy', '2', '--preset',
                    'blizzard', '--save-scene', 'shot.toml', '--dry-run'], check=True, cwd=folder, stdout=subprocess.DEVNULL)
    for task in range(1, shares + 1):
        subprocess.run(['sh', os.path.join(EXAMPLES, 'farm.sbatch'), 'shot.toml', str(shares)], check=True, cwd=folder,
                       stderr=subprocess.DEVNULL, env=os.environ | {'VINTREL': tool, 'SLURM_ARRAY_TASK_ID': str(task)})
    subprocess.run([tool, 'sheet', 'frames/snow.####.png', '-q', '-o', 'farm.png', '--frames', '0-479x30', '--count', '16',
                    '--set', 'flakes=0'], check=True, cwd=folder)
    draw_small(os.path.join(folder, 'farm.png'), 'farm', 'iw:ih:0:0', '720:-1')


def main():
    tool, frei0r, gallery = (os.path.abspath(argument) for argument in sys.argv[1:])
    for sheet in sorted(glob.glob(os.path.join(gallery, '*-sheet.png'))):
        look = os.path.basename(sheet)[:-len('-sheet.png')]
        draw_small(os.path.join(gallery, look + '.png'), look, HALF, '400:225')
    with tempfile.TemporaryDirectory() as folder:
        draw_loop(tool, folder)
        draw_farm(tool, folder)
        sheet = os.path.join(folder, 'sheet.png')
        subprocess.run([tool, 'sheet', STREET, '-q', '-o', sheet, '--frames', '0-95', '--count', '4', '--proxy', '2',
                        '--preset', 'turning-wind'], check=True)
        draw_small(sheet, 'tool', 'iw:ih:0:0', '800:-1')
        values = '0.95|0.8|0.25|0.444|0.3|0.5|0.65|0|0.333|0.2|0|0.474|0.75|y|0.5|1/1/1|0.9|0.4'
        ffmpeg('-loop', '1', '-framerate', '25', '-i', STREET, '-vf', f'frei0r=vintrel:{values},crop={HALF},scale=400:225:flags=area',
               '-frames:v', '48', '-update', '1', '-q:v', '3', os.path.join(HERE, 'ffmpeg.jpg'),
               env=os.environ | {'FREI0R_PATH': frei0r})


main()
