# What build this is: the program's texts (core_rcsname.cpp) and, on Windows, its version
# resource. A build that stamps itself sets these on the command line.

set(ORVISTRAND_BUILD_TAG "tag_orvistrand_2_1_rc_1" CACHE STRING "Source-control tag of the build")
set(ORVISTRAND_BUILD_STAMP "220329-103018" CACHE STRING "Time of the build, yymmdd-hhmmss")
set(ORVISTRAND_BUILD_MODULE "orvistrand" CACHE STRING "Product module that the build belongs to")
set(ORVISTRAND_BUILD_PLATFORM "win_i686" CACHE STRING "Platform that the build's reports name")
mark_as_advanced(ORVISTRAND_BUILD_TAG ORVISTRAND_BUILD_STAMP ORVISTRAND_BUILD_MODULE
    ORVISTRAND_BUILD_PLATFORM)

set(ORVISTRAND_PRODUCT "Orvistrand Configure")
set(ORVISTRAND_COMPANY "Quorvane")
