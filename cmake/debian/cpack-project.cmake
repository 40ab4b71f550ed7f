# Read by CPack before it builds the packages: each package's description
# starts with its own synopsis, so no common summary goes in front.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
