// A window seen from inside a dark room: frame, sill, a plant and a cat.
// The panes are empty, so rendered with an alpha channel (+UA) the picture
// is a foreground layer for whatever happens outdoors.
// Metres; x to the right, y up, z out of the window.
#version 3.7;
#include "materials.inc"

global_settings { assumed_gamma 1.0 max_trace_level 8 }

#declare Open_Left   = -1.30;
#declare Open_Right  = 1.30;
#declare Sill_Y      = 0.26;
#declare Open_Top    = 1.80;
#declare Transom_Y   = 1.36;
#declare Post_X      = 0.02;
#declare Frame_Thick = 0.07;

// Shifted like the street view, so that the frame stays square.
camera {
    perspective
    location <0.05, 1.02, -2.4>
    direction <-0.02, -0.045, 1>
    right x * 1.22
    up y * 1.22 * 9 / 16
}

// A reading lamp somewhere behind the viewer, and the evening outside, which
// only grazes edges from behind.
light_source { <0.95, 1.9, -2.2> rgb <1, 0.55, 0.22> * 0.62 fade_distance 1.6 fade_power 2 }
light_source { <-1.5, 3.2, 5> rgb <0.30, 0.42, 0.70> * 1.1 area_light x * 3, y * 2, 5, 5 adaptive 1 }
light_source { <2.8, 1.2, 4> rgb <1.0, 0.58, 0.25> * 0.30 area_light x, y, 4, 4 adaptive 1 }

#declare Frame_Paint = texture {
    pigment { rgb <0.30, 0.27, 0.23> }
    finish { diffuse 0.7 emission 0.012 specular 0.25 roughness 0.02 }
}
#declare Room_Wall = texture {
    pigment { rgb <0.16, 0.12, 0.095> }
    finish { diffuse 0.7 emission 0.02 }
}

// A bar of the frame with a bead along both edges.
#macro Upright(X, Half, From, To)
    box { <X - Half, From, -0.03>, <X + Half, To, 0.05> }
    box { <X - Half * 0.6, From, -0.045>, <X + Half * 0.6, To, 0.0> }
    cylinder { <X - Half * 0.8, From, -0.03>, <X - Half * 0.8, To, -0.03>, Half * 0.16 }
    cylinder { <X + Half * 0.8, From, -0.03>, <X + Half * 0.8, To, -0.03>, Half * 0.16 }
#end
#macro Crossbar(Y, Half, From, To)
    box { <From, Y - Half, -0.03>, <To, Y + Half, 0.05> }
    box { <From, Y - Half * 0.6, -0.045>, <To, Y + Half * 0.6, 0.0> }
    cylinder { <From, Y - Half * 0.8, -0.03>, <To, Y - Half * 0.8, -0.03>, Half * 0.16 }
    cylinder { <From, Y + Half * 0.8, -0.03>, <To, Y + Half * 0.8, -0.03>, Half * 0.16 }
#end

union {
    Upright(Open_Left + 0.05, 0.07, Sill_Y, Open_Top)
    Upright(Open_Right - 0.05, 0.07, Sill_Y, Open_Top)
    Upright(Post_X, 0.065, Sill_Y, Open_Top)
    Crossbar(Sill_Y + 0.045, 0.065, Open_Left, Open_Right)
    Crossbar(Transom_Y, 0.05, Open_Left, Open_Right)
    // Glazing bars of the fanlights.
    #for (I, -1, 1, 2)
        Upright(Post_X + I * 0.63, 0.018, Transom_Y, Open_Top)
    #end
    texture { Frame_Paint }
}

// Casement handle: brass plate and lever.
union {
    superellipsoid { <0.4, 0.4> scale <0.018, 0.06, 0.008> }
    cylinder { <0, 0, 0>, <0, 0, -0.05>, 0.011 }
    sphere_sweep { cubic_spline 5, <-0.02, 0.02, -0.05>, 0.011, <0, 0, -0.05>, 0.011, <0.02, -0.05, -0.055>, 0.010, <0.01, -0.11, -0.05>, 0.013, <0, -0.15, -0.05>, 0.01 }
    translate <Post_X, 0.83, -0.055>
    texture { pigment { rgb <0.42, 0.28, 0.09> } finish { diffuse 0.5 specular 0.9 roughness 0.015 metallic } }
}

// Wall round the opening, its reveals, and the sill.
difference {
    box { <-3, -1, -0.30>, <3, 3, 0.06> }
    box { <Open_Left, Sill_Y - 0.04, -1>, <Open_Right, Open_Top, 1> }
    texture { Room_Wall }
}
union {
    superellipsoid { <0.05, 0.3> scale <1.5, 0.03, 0.25> translate <0, Sill_Y - 0.03, -0.22> }
    box { <-1.42, Sill_Y - 0.13, -0.40>, <1.42, Sill_Y - 0.06, -0.2> }
    texture {
        pigment {
            wood
            turbulence 0.06
            color_map { [0 rgb <0.17, 0.085, 0.04>] [1 rgb <0.25, 0.135, 0.065>] }
            scale <4, 0.05, 0.05>
            rotate <3, 1, 0>
        }
        finish { diffuse 0.7 specular 0.35 roughness 0.02 reflection { 0.01, 0.12 } }
    }
}

// Snow lodged against the panes from outside, higher in the corners.
#macro Drift(From, To, Y)
    #local Stream = seed(7);
    #for (I, 0, 14)
        #local T = I / 14;
        #local Corner = pow(abs(2 * T - 1), 3);
        sphere {
            0, 1
            scale <0.10, 0.012 + 0.028 * Corner + 0.006 * rand(Stream), 0.03>
            translate <From + 0.05 + (To - From - 0.1) * T, Y, 0.075>
        }
    #end
#end
union {
    Drift(Open_Left + 0.1, Post_X - 0.05, Sill_Y + 0.105)
    Drift(Post_X + 0.05, Open_Right - 0.1, Sill_Y + 0.105)
    Drift(Open_Left + 0.1, Post_X - 0.05, Transom_Y + 0.045)
    Drift(Post_X + 0.05, Open_Right - 0.1, Transom_Y + 0.045)
    pigment { rgb <0.65, 0.72, 0.85> }
    finish { diffuse 0.8 emission 0.20 }
}

// Frost creeps over the glass from the edges: thin, so it also gives the
// layer a soft, partly transparent rim.
#macro Pane(Left, Right, Bottom, Top)
    box {
        -1, 1
        texture {
            pigment {
                boxed
                turbulence 0.25 octaves 4 lambda 2.2
                color_map {
                    [0.00 rgbt <0.55, 0.66, 0.85, 0.45>]
                    [0.05 rgbt <0.55, 0.66, 0.85, 0.66>]
                    [0.13 rgbt <0.55, 0.66, 0.85, 0.90>]
                    [0.24 rgbt <0.55, 0.66, 0.85, 1.00>]
                    [1.00 rgbt <0.55, 0.66, 0.85, 1.00>]
                }
                // Stretched so that only the two wide axes count.
                scale <1.02, 1.02, 4>
            }
            finish { diffuse 0 emission 0.35 }
        }
        scale <(Right - Left) / 2, (Top - Bottom) / 2, 0.002>
        translate <(Left + Right) / 2, (Bottom + Top) / 2, 0.03>
        no_shadow
    }
#end
Pane(Open_Left + 0.1, Post_X, Sill_Y + 0.08, Transom_Y)
Pane(Post_X, Open_Right - 0.1, Sill_Y + 0.08, Transom_Y)

#include "windowsill.inc"
