/** \file file_handling.h
 *  The procedural interface of libKalvFileHandling, whole. Needs only C99; libxml2's headers are not needed.
 */
#ifndef KALV_FILE_HANDLING_H
#define KALV_FILE_HANDLING_H

#include <kalv/build.h>
#include <kalv/cursor.h>
#include <kalv/document.h>
#include <kalv/node.h>
#include <kalv/path.h>
#include <kalv/product.h>
#include <kalv/read.h>
#include <kalv/status.h>
#include <kalv/text.h>
#include <kalv/version.h>

#endif
