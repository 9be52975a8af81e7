; The uninstaller.

; A running program cannot delete its own file, so a copy does that as soon as possible. The copy
; itself is deleted at the next start of Windows.
Function RemoveItself
    GetTempFileName $0
    Delete $0
    CopyFiles /SILENT "$EXEPATH" "$0.exe"
    Exec '"$0.exe" /S /FOLLOW=$INSTDIR'
FunctionEnd

Function Follow
    ${For} $1 1 100
        Sleep 100
        Delete "$INSTDIR\uninstall.exe"
        ${IfNot} ${FileExists} "$INSTDIR\uninstall.exe"
            ${Break}
        ${EndIf}
    ${Next}
    RMDir "$INSTDIR"
    RMDir "$PROGRAMFILES\${COMPANY}"
    Delete /REBOOTOK "$EXEPATH"
    Quit
FunctionEnd

Function .onInit
    SetOutPath "$TEMP" ; a current folder cannot be removed
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/FOLLOW=" $INSTDIR
    ${IfNot} ${Errors}
        Call Follow
    ${EndIf}
    StrCpy $INSTDIR $EXEDIR
    ${IfNot} ${Silent}
        MessageBox MB_OKCANCEL|MB_ICONQUESTION "Remove ${PRODUCT} from $INSTDIR?" IDOK agreed
        SetErrorLevel ${STATUS_CANCELLED}
        Quit
        agreed:
    ${EndIf}
FunctionEnd

; An empty log is the one that the installer made.
Function RemoveEmptyLog
    ClearErrors
    FileOpen $0 "$INSTDIR\files\dumps.log" r
    ${IfNot} ${Errors}
        FileSeek $0 0 END $1
        FileClose $0
        ${If} $1 == 0
            Delete "$INSTDIR\files\dumps.log"
        ${EndIf}
    ${EndIf}
    RMDir "$INSTDIR\files"
    RMDir "$INSTDIR\dumps"
FunctionEnd

Section
    SetShellVarContext all
    StrCpy $R0 $INSTDIR
    Call RefuseWhileRunning
    ClearErrors
    Call RemoveFiles
    ${If} ${Errors}
        MessageBox MB_ICONSTOP "Some files in $INSTDIR cannot be removed. Please try again \
            when nothing uses them." /SD IDOK
        SetErrorLevel ${STATUS_REFUSED}
        Quit
    ${EndIf}
    Call RemoveEmptyLog
    Call RemoveFolders
    Delete "$SMPROGRAMS\${COMPANY}\${PRODUCT}.lnk"
    RMDir "$SMPROGRAMS\${COMPANY}"
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
    ; With _?= the uninstaller does not delete itself; the installer does so after it has ended.
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "_?=" $1
    ${If} ${Errors}
        Call RemoveItself
    ${EndIf}
SectionEnd
