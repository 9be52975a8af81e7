; An installer of version 2.0, as far as an upgrade needs it: with other files, and an uninstaller
; made by NSIS.
Unicode true
!include LogicLib.nsh
!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Orvistrand Configure"
Name "Orvistrand Configure"
OutFile "${OUT}"
InstallDir "$PROGRAMFILES\Quorvane\Orvistrand Configure"
RequestExecutionLevel admin

Section
    SetOutPath "$INSTDIR"
    File /oname=configure.exe "${__FILE__}"
    File /oname=gone.txt "${__FILE__}"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr HKLM "${KEY}" DisplayVersion "2.0"
    WriteRegStr HKLM "${KEY}" InstallLocation "$INSTDIR"
SectionEnd

Section Uninstall
    Delete "$INSTDIR\configure.exe"
    Delete "$INSTDIR\gone.txt"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    DeleteRegKey HKLM "${KEY}"
SectionEnd
