// The scope Utils, whole.

#pragma once

#include "common/utils/backup_layout.h"
#include "common/utils/dates.h"
#include "common/utils/fields.h"
#include "common/utils/identifiers.h"
#include "common/utils/matching.h"
#include "common/utils/paths.h"
#include "common/utils/table_check.h"
#include "common/utils/text.h"
