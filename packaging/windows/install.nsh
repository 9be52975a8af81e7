; The installer. It writes the new version beside the old one, then exchanges them by renaming two
; folders; until then nothing old is touched.

Var stage ; the folder for the new version until it is complete
Var aside ; the folder for the old version until it is removed
Var former ; the folder of the version that this one replaces
Var parentIsNew
Var obstacle
Var size ; in kB

Function CleanUp
    SetOutPath "$TEMP" ; a current folder cannot be removed
    RMDir /r "$stage"
    ${If} $parentIsNew != ""
        RMDir "$parentIsNew"
    ${EndIf}
FunctionEnd

; Called if a file cannot be written. NSIS itself then returns 2.
Function .onInstFailed
    Call CleanUp
FunctionEnd

!macro GiveUp REASON
    Call CleanUp
    MessageBox MB_ICONSTOP "${REASON} Nothing was changed." /SD IDOK
    SetErrorLevel ${STATUS_REFUSED}
    Quit
!macroend

; Finds a file where a folder belongs, or the other way round. $0: the folder in the new version, ""
; or "\sub".
Function FindObstacle
    Push $1
    Push $2
    FindFirst $1 $2 "$stage$0\*"
    ${While} $2 != ""
        ${If} $2 == "."
        ${OrIf} $2 == ".."
            ; neither
        ${ElseIf} ${FileExists} "$stage$0\$2\*.*"
            ${If} ${FileExists} "$INSTDIR$0\$2"
            ${AndIfNot} ${FileExists} "$INSTDIR$0\$2\*.*"
                StrCpy $obstacle "$INSTDIR$0\$2"
            ${EndIf}
            Push $0
            StrCpy $0 "$0\$2"
            Call FindObstacle
            Pop $0
        ${ElseIf} ${FileExists} "$INSTDIR$0\$2\*.*"
            StrCpy $obstacle "$INSTDIR$0\$2"
        ${EndIf}
        FindNext $1 $2
    ${EndWhile}
    FindClose $1
    Pop $2
    Pop $1
FunctionEnd

; Moves the files that did not belong to the old version back into the folder. $0: as above.
Function GiveBack
    Push $1
    Push $2
    FindFirst $1 $2 "$aside$0\*"
    ${While} $2 != ""
        ${If} $2 != "."
        ${AndIf} $2 != ".."
            ${IfNot} ${FileExists} "$INSTDIR$0\$2"
                Rename "$aside$0\$2" "$INSTDIR$0\$2"
            ${ElseIf} ${FileExists} "$aside$0\$2\*.*"
                Push $0
                StrCpy $0 "$0\$2"
                Call GiveBack
                Pop $0
            ${Else}
                Delete "$aside$0\$2"
            ${EndIf}
        ${EndIf}
        FindNext $1 $2
    ${EndWhile}
    FindClose $1
    RMDir "$aside$0"
    Pop $2
    Pop $1
FunctionEnd

; Removes a version by its own uninstaller, since only that knows its files. $R0: the folder.
Function RemoveVersion
    ${If} ${FileExists} "$R0\uninstall.exe"
        ExecWait '"$R0\uninstall.exe" /S _?=$R0'
        Delete "$R0\uninstall.exe"
        RMDir "$R0"
    ${EndIf}
FunctionEnd

Function PrepareFolders
    StrCpy $stage "$INSTDIR~new"
    StrCpy $aside "$INSTDIR~old"
    ; An earlier installation was interrupted between its two last steps.
    ${If} ${FileExists} "$aside\*.*"
    ${AndIfNot} ${FileExists} "$INSTDIR"
        Rename "$aside" "$INSTDIR"
    ${EndIf}
    RMDir /r "$stage"
    ${If} ${FileExists} "$aside"
        !insertmacro GiveUp "$aside is in the way."
    ${EndIf}
    ${If} ${FileExists} "$INSTDIR\*.*"
        ClearErrors
        FileOpen $0 "$INSTDIR\~new" w
        ${If} ${Errors}
            !insertmacro GiveUp "$INSTDIR cannot be written to."
        ${EndIf}
        FileClose $0
        Delete "$INSTDIR\~new"
    ${ElseIf} ${FileExists} "$INSTDIR"
        !insertmacro GiveUp "$INSTDIR is in the way."
    ${EndIf}
    ${GetParent} "$INSTDIR" $0
    ${IfNot} ${FileExists} "$0\*.*"
        StrCpy $parentIsNew $0
    ${EndIf}
FunctionEnd

; Replaces the old version with the new one.
Function Exchange
    SetOutPath "$TEMP"
    ClearErrors
    ${If} ${FileExists} "$INSTDIR\*.*"
        Rename "$INSTDIR" "$aside"
        ${If} ${Errors}
            !insertmacro GiveUp "$INSTDIR cannot be replaced."
        ${EndIf}
    ${EndIf}
    Rename "$stage" "$INSTDIR"
    ${If} ${Errors}
        Rename "$aside" "$INSTDIR"
        !insertmacro GiveUp "$INSTDIR cannot be written."
    ${EndIf}
FunctionEnd

!macro Permit PATH RIGHTS
    System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(\
        w "${RIGHTS}", i 1, *p .r0, p 0)'
    System::Call 'advapi32::SetFileSecurityW(w "${PATH}", i 4, p r0)'
    System::Call 'kernel32::LocalFree(p r0)'
!macroend

; For what crashes and reports leave: users may add files, but not list the folder, nor read or
; replace others' files. All may add lines to the one log, which only administrators may read.
!define ADD_FILES "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)(A;;0x1200a2;;;BU)"
!define ADD_LINES "D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x120196;;;BU)"

Function MakeEvidenceFolders
    CreateDirectory "$INSTDIR\dumps"
    CreateDirectory "$INSTDIR\files"
    FileOpen $0 "$INSTDIR\files\dumps.log" a
    FileClose $0
    !insertmacro Permit "$INSTDIR\dumps" "${ADD_FILES}"
    !insertmacro Permit "$INSTDIR\files" "${ADD_FILES}"
    !insertmacro Permit "$INSTDIR\files\dumps.log" "${ADD_LINES}"
FunctionEnd

Section
    SetShellVarContext all
    ReadRegStr $former HKLM "${UNINSTALL_KEY}" InstallLocation
    StrCpy $R0 $INSTDIR
    Call RefuseWhileRunning
    ${If} $former != ""
        StrCpy $R0 $former
        Call RefuseWhileRunning
    ${EndIf}
    Call PrepareFolders

    SetOutPath "$stage"
    File /r "${INST_DIR}/*.*"
    ${GetSize} "$stage" "/S=0K" $size $0 $1
    StrCpy $0 ""
    Call FindObstacle
    ${If} $obstacle != ""
        !insertmacro GiveUp "$obstacle is in the way."
    ${EndIf}
    Call Exchange

    StrCpy $R0 $aside
    Call RemoveVersion
    ${If} $former != ""
    ${AndIf} $former != $INSTDIR
        StrCpy $R0 $former
        Call RemoveVersion
    ${EndIf}
    StrCpy $0 ""
    Call GiveBack
    Call MakeEvidenceFolders
    Call Register
SectionEnd
