#pragma once

#include "records/fields/AudioFields.h"
#include "records/fields/ControlFields.h"
#include "records/fields/LyricFields.h"
#include "records/fields/MediaFields.h"
#include "records/fields/OutputFields.h"
#include "records/fields/PictureFields.h"
#include "records/fields/ShowFields.h"
#include "records/fields/SourceFields.h"
#include "records/fields/VideoFilterFields.h"
