# Checks the app bundle's Info.plist, as configured: the keys the bundle needs
# to be a proper Mac app, with the values made from the project's identifier,
# version and deployment target, and both private drag types exported.
#   cmake -DPLIST=... -DAPP_ID=... -DAPP_NAME=... -DVERSION=... -DMINIMUM_MACOS=... -P CheckInfoPlist.cmake

cmake_minimum_required(VERSION 3.21)

file(READ ${PLIST} plist)
set(errors)

# One <key>K</key> followed by its value; XML comments and blank space between.
string(REGEX REPLACE "<!--[^>]*-->" "" plist "${plist}")
macro(expect_string key value)
    if(NOT plist MATCHES "<key>${key}</key>[ \t\r\n]*<string>([^<]*)</string>")
        list(APPEND errors "no string for ${key}")
    elseif(NOT CMAKE_MATCH_1 STREQUAL "${value}")
        list(APPEND errors "${key} is \"${CMAKE_MATCH_1}\", not \"${value}\"")
    endif()
endmacro()
macro(expect_true key)
    if(NOT plist MATCHES "<key>${key}</key>[ \t\r\n]*<true/>")
        list(APPEND errors "${key} is not true")
    endif()
endmacro()

if(plist MATCHES "[$@][{A-Z]")
    list(APPEND errors "a variable was left unreplaced")
endif()
expect_string(CFBundleIdentifier "${APP_ID}")
expect_string(CFBundleExecutable "${APP_NAME}")
expect_string(CFBundleName "${APP_NAME}")
expect_string(CFBundlePackageType APPL)
expect_string(CFBundleIconFile AppIcon)
expect_string(CFBundleShortVersionString "${VERSION}")
expect_string(CFBundleVersion "${VERSION}")
expect_string(LSMinimumSystemVersion "${MINIMUM_MACOS}")
expect_string(LSApplicationCategoryType public.app-category.productivity)
expect_string(NSPrincipalClass NSApplication)
expect_true(NSHighResolutionCapable)
if(NOT MINIMUM_MACOS MATCHES "^[0-9]+\\.[0-9]+(\\.[0-9]+)?$")
    list(APPEND errors "the minimum macOS \"${MINIMUM_MACOS}\" is not a version")
endif()

# Both drag types, each exported as conforming to public.data.
string(REGEX MATCH "<key>UTExportedTypeDeclarations</key>[ \t\r\n]*<array>.*</array>" exported "${plist}")
foreach(suffix prompt-drag section-drag)
    string(REPLACE "." "\\." escaped "${APP_ID}.${suffix}")
    if(NOT exported MATCHES
       "<dict>[ \t\r\n]*<key>UTTypeIdentifier</key>[ \t\r\n]*<string>${escaped}</string>[ \t\r\n]*<key>UTTypeDescription</key>[ \t\r\n]*<string>[^<]+</string>[ \t\r\n]*<key>UTTypeConformsTo</key>[ \t\r\n]*<array>[ \t\r\n]*<string>public\\.data</string>[ \t\r\n]*</array>[ \t\r\n]*</dict>")
        list(APPEND errors "${APP_ID}.${suffix} is not exported as public.data")
    endif()
endforeach()

# Well formed: every <dict> and <array> closed.
foreach(tag dict array)
    string(REGEX MATCHALL "<${tag}>" opened "${plist}")
    string(REGEX MATCHALL "</${tag}>" closed "${plist}")
    list(LENGTH opened opened_count)
    list(LENGTH closed closed_count)
    if(NOT opened_count EQUAL closed_count)
        list(APPEND errors "${opened_count} <${tag}> but ${closed_count} </${tag}>")
    endif()
endforeach()

if(errors)
    list(JOIN errors "\n  " text)
    message(FATAL_ERROR "${PLIST}:\n  ${text}")
endif()
