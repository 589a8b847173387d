// ExpeditionLayout.cpp - the design model of one Expedition job.
#include "core/lib/vellum/AString.h"
