// What the commands of `vintrel` do, once the command line is read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/command/options.h"
#include "cli/report/error.h"
#include "cli/report/messages.h"
#include "cli/scene/presets.h"
#include "minihost/effect.h"

namespace cli {

/// `vintrel render`: snow on a picture, a sequence, a video or nothing, with progress and a closing line
/// among the messages.  Everything that can be checked is, before the first frame; frames that are done stay
/// when a later one fails.
///
/// Returns kDone, kFrameFailed or kInterrupted; throws ToolError for the rest.
ExitCode RenderShot(const ShotOptions& options, std::shared_ptr<const minihost::Effect> effect,
                    Messages& messages);

/// `vintrel sheet`: `cells` frames, spread evenly over those that `options` asks for, on one picture with
/// their numbers, so that one look shows the shot.  It is written to `options.output`.  Throws ToolError.
ExitCode RenderSheet(const ShotOptions& options, int cells, std::shared_ptr<const minihost::Effect> effect,
                     Messages& messages);

/// `vintrel panel`: serves the page that sets the look of a scene to the browser of this machine, with the
/// address on standard output, until Ctrl-C or until the page has been gone for a minute.
///
/// Returns kDone or kInterrupted; throws ToolError.
ExitCode OpenPanel(const PanelOptions& options, const minihost::Effect& effect, Messages& messages);

enum class InfoForm { kText, kJson };

/// `vintrel info`: what there is to say about a picture, a sequence or a video: size, depth, alpha, pixel
/// aspect, frames, rate, and notes; a line each, or a JSON object on one line.  Throws ToolError(kInput).
std::string DescribeInput(const std::string& path, InfoForm form);

/// `vintrel presets`: a line for each, id, name and description.
std::string PresetTable(const std::vector<Preset>& presets);

/// `vintrel params`: a line for each parameter that can be set, below a line of headings.
std::string ParameterTable(const minihost::ParameterList& list);

/// `vintrel check`: the battery on a module, or on the effect in the tool; what came of it goes to standard
/// output.  Returns kDone when all held, else kFrameFailed; throws ToolError for what cannot be tried.
ExitCode CheckModule(const CheckOptions& options, minihost::EntryPoint ownEffect);

}  // namespace cli
