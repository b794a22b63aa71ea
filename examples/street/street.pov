// A street of an old town at blue hour, just after the first snow.
// Metres; x to the right, y up, z along the street away from the viewer.
#version 3.7;

// Radiosity fills the shadows with sky.  Draft=1 on the command line
// (Declare=Draft=1) leaves it coarse for a quick look.
#ifndef (Draft) #declare Draft = 0; #end

global_settings {
    assumed_gamma 1.0
    max_trace_level 14
    adc_bailout 0.01
    radiosity {
        count (Draft ? 25 : 40)
        error_bound (Draft ? 1.2 : 1.0)
        nearest_count (Draft ? 4 : 6)
        pretrace_start 0.08
        pretrace_end (Draft ? 0.04 : 0.02)
        recursion_limit 2
        gray_threshold 0.1
        low_error_factor 0.6
        brightness 1.35
        normal off
    }
}

#declare Eye = <-0.8, 1.85, -1.5>;

#include "materials.inc"
#include "openings.inc"
#include "shop.inc"
#include "roofs.inc"
#include "facades.inc"
#include "lamps.inc"
#include "trees.inc"
#include "ground.inc"
#include "furniture.inc"
#include "church.inc"

// The view is shifted, not turned: walls stay upright while the vanishing
// point lies left of the middle and below it.
camera {
    perspective
    location Eye
    direction <0.11, 0.10, 1>
    right x * 1.42
    up y * 1.42 * 9 / 16
}

sky_sphere {
    pigment {
        gradient y
        color_map {
            [0.00 rgb <0.430, 0.300, 0.280>]
            [0.07 rgb <0.390, 0.315, 0.335>]
            [0.16 rgb <0.260, 0.290, 0.405>]
            [0.32 rgb <0.115, 0.180, 0.350>]
            [0.60 rgb <0.045, 0.090, 0.220>]
            [1.00 rgb <0.022, 0.050, 0.140>]
        }
    }
    // Torn snow clouds, lit from below by the last of the day.
    pigment {
        bozo
        turbulence 0.55 octaves 5 omega 0.45
        color_map {
            [0.42 rgbt <0.10, 0.11, 0.15, 1.00>]
            [0.55 rgbt <0.15, 0.15, 0.20, 0.55>]
            [0.70 rgbt <0.07, 0.09, 0.15, 0.30>]
            [0.90 rgbt <0.05, 0.07, 0.13, 0.25>]
        }
        scale <0.40, 0.09, 0.40>
        translate <3.1, 0.2, 1.3>
    }
    // Grain finer than a pixel, a quarter step of an 8-bit channel strong: it
    // keeps the even sky from showing bands.  Dithering the whole picture
    // would do so too, but makes its file a good deal larger.
    pigment {
        bozo
        color_map {
            [0 rgbt <0.00, 0.00, 0.00, 0.985>]
            [1 rgbt <0.22, 0.28, 0.42, 0.985>]
        }
        scale 0.0005
        translate 3
    }
}

// Cold haze everywhere, and a warmer one lying in the street, where the
// lamps light it.
// A layer of limited height keeps the sky its own colour.
fog { fog_type 2 distance 145 fog_offset 7 fog_alt 8 color rgb <0.160, 0.185, 0.275> }
fog { fog_type 2 distance 260 fog_offset 0.5 fog_alt 2.2 color rgb <0.34, 0.22, 0.13> }

object { Roadway }

// Terraces.  A terrace is a walk along the street: every house is set down at
// the present spot, then the walk moves on by its width and may turn left.
#declare Facade_X = Road_Half + Pavement_Wide + 0.2;
#macro Step_Left(Wide)
    rotate y * (-90 - Turn)
    translate Spot
    #declare Spot = Spot + Wide * vrotate(z, y * -Turn);
#end
#macro Step_Right(Wide)
    #declare Spot = Spot + Wide * vrotate(z, y * -Turn);
    rotate y * (90 - Turn)
    translate Spot
#end

#declare White = Paint(<0.62, 0.60, 0.55>)
#declare Cream = Paint(<0.50, 0.43, 0.32>)
#declare Green = Paint(<0.035, 0.095, 0.075>)
#declare Navy = Paint(<0.03, 0.045, 0.10>)
#declare Brown = Paint(<0.11, 0.055, 0.03>)
#declare Wine = Paint(<0.14, 0.02, 0.025>)
#declare Ochre_Wall = Plaster(<0.50, 0.34, 0.16>)
#declare Rose_Wall = Plaster(<0.46, 0.24, 0.19>)
#declare Cream_Wall = Plaster(<0.55, 0.48, 0.37>)
#declare Grey_Wall = Plaster(<0.34, 0.35, 0.36>)
#declare Sage_Wall = Plaster(<0.27, 0.33, 0.27>)
#declare Red_Brick = Brickwork(<0.25, 0.095, 0.06>)
#declare Dark_Brick = Brickwork(<0.16, 0.085, 0.065>)
#declare Slate = <0.05, 0.055, 0.065>;
#declare Clay = <0.17, 0.065, 0.04>;

#declare Turn = 0;
#declare Spot = <-Facade_X, 0, 0.5>;
object { House(6.6, 1, 3, Sage_Wall, Cream, Green, Eaves_Roof, Slate, Plain_Ground, 1, 0, 0.6, 3) Step_Left(6.6) }
object { House(7.4, 1, 3, Red_Brick, Cream, Green, Stepped_Gable, Clay, Awning_Ground, 0, 0, 0.6, 12) Step_Left(7.4) }
object { House(6.2, 2, 3, Ochre_Wall, White, Brown, Eaves_Roof, Clay, Plain_Ground, 1, 0, 0.5, 8) Step_Left(6.2) }
object { House(5.6, 2, 2, Grey_Wall, White, Navy, Gable_Roof, Slate, Shop_Ground, 0, 0, 0.5, 15) Step_Left(5.6) }
object { House(7.6, 2, 4, Cream_Wall, Cream, Wine, Mansard_Roof, Slate, Arch_Ground, 0, 0, 0.4, 21) Step_Left(7.6) }
#declare Turn = 3;
object { House(6.0, 2, 3, Dark_Brick, Cream, White, Stepped_Gable, Clay, Plain_Ground, 0, 0, 0.5, 27) Step_Left(6.0) }
#declare Turn = 7;
object { House(7.0, 2, 3, Rose_Wall, White, Green, Eaves_Roof, Clay, Shop_Ground, 1, 0, 0.5, 30) Step_Left(7.0) }
#declare Turn = 12;
object { House(7.0, 2, 3, Grey_Wall, White, Green, Gable_Roof, Clay, Plain_Ground, 1, 0, 0.5, 34) Step_Left(7.0) }

#declare Turn = 0;
#declare Spot = <Facade_X, 0, 1.5>;
object { House(6.0, 1, 3, Rose_Wall, Cream, Navy, Eaves_Roof, Clay, Plain_Ground, 0, 0, 0.5, 4) Step_Right(6.0) }
object { House(7.0, 1, 3, Cream_Wall, Cream, Wine, Gable_Roof, Clay, Plain_Ground, 0, 1, 0.7, 7) Step_Right(7.0) }
object { House(6.4, 2, 3, Grey_Wall, White, Navy, Mansard_Roof, Slate, Shop_Ground, 0, 0, 0.5, 18) Step_Right(6.4) }
object { House(5.4, 2, 2, Dark_Brick, Cream, Green, Stepped_Gable, Clay, Plain_Ground, 0, 0, 0.6, 23) Step_Right(5.4) }
object { House(7.2, 2, 3, Ochre_Wall, White, Brown, Eaves_Roof, Slate, Awning_Ground, 1, 0, 0.4, 26) Step_Right(7.2) }
#declare Turn = 4;
object { House(6.0, 1, 3, Sage_Wall, White, Green, Gable_Roof, Clay, Plain_Ground, 1, 0, 0.6, 31) Step_Right(6.0) }
#declare Turn = 9;
object { House(6.8, 2, 3, Rose_Wall, Cream, Wine, Stepped_Gable, Clay, Shop_Ground, 0, 0, 0.5, 36) Step_Right(6.8) }
#declare Turn = 15;
object { House(7.2, 2, 3, Cream_Wall, White, Navy, Eaves_Roof, Slate, Plain_Ground, 1, 0, 0.5, 38) Step_Right(7.2) }
#declare Turn = 22;
object { House(7.2, 2, 3, Grey_Wall, White, Navy, Gable_Roof, Clay, Plain_Ground, 1, 0, 0.6, 41) Step_Right(7.2) }
#declare Turn = 28;
object { House(7.2, 2, 3, Ochre_Wall, White, Wine, Eaves_Roof, Clay, Plain_Ground, 1, 0, 0.5, 45) Step_Right(7.2) }

// Two houses across the bend close the view beside the church.
object { House(8, 2, 4, Rose_Wall, White, Green, Eaves_Roof, Clay, Plain_Ground, 1, 0, 0.6, 52) rotate y * 6 translate <-23, 0, 84> }
object { House(8, 1, 3, Cream_Wall, White, Brown, Gable_Roof, Slate, Plain_Ground, 1, 0, 0.7, 55) rotate y * 6 translate <-15, 0, 84> }

object { Church rotate y * 12 translate <-4, 0, 92> }

#declare Lamp_X = Road_Half + 0.75;
Street_Lamp(<Lamp_X, Kerb_High, 6.9>, 2.8)
Street_Lamp(<-Lamp_X, Kerb_High, 13.5>, 3.6)
Street_Lamp(<Lamp_X, Kerb_High, 21>, 4.0)
Street_Lamp(<-Lamp_X, Kerb_High, 28>, 4.2)
Street_Lamp(<Lamp_X, Kerb_High, 36>, 4.6)
Street_Lamp(<-Lamp_X - 0.6, Kerb_High, 44>, 4.5)
Street_Lamp(<Lamp_X - 2.2, Kerb_High, 55>, 5)

// Light that the near shop throws on its pavement.
light_source { <-Facade_X + 0.5, 1.9, 10.6> Window_Colour * 1.4 fade_distance 1.2 fade_power 2 }

object { Tree(2.5, 8, 5) rotate y * 40 translate <Lamp_X + 0.2, Kerb_High, 14.5> }
object { Tree(2.7, 8, 11) rotate y * 200 translate <-Lamp_X, Kerb_High, 36.5> }
object { Tree(3.0, 8, 19) translate <4.5, Kerb_High, 62> }

object { Snowy_Bench rotate y * 90 translate <Facade_X - 0.75, Kerb_High, 13> }
object { Bicycle rotate x * -7 rotate y * 78 translate <Lamp_X - 0.33, Kerb_High, 7.0> }

Bulb_String(<-Facade_X, 6.2, 12>, <Facade_X, 6.0, 13>, 1.0, 16)
Bulb_String(<-Facade_X, 6.6, 22>, <Facade_X, 6.6, 21>, 1.1, 16)
Bulb_String(<-Facade_X, 6.6, 32>, <Facade_X, 6.6, 32>, 1.1, 16)
object { Wire(<-Facade_X, 7.6, 17>, <Facade_X, 8.4, 19>, 0.4, 0.012) }
object { Wire(<-Facade_X, 8.2, 26>, <Facade_X, 8.0, 28>, 0.4, 0.012) }
